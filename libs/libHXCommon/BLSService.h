#ifndef BLSSERVICE_H
#define BLSSERVICE_H

#include "HXCommonExport.h"

#include <QObject>

/**
 * Control of a basic-life-support training session.
 *
 * The keys begin with a lower-case letter, and QML refuses these under a type that was registered for it:
 * `BLSService.sessionStop` is a TypeError there (in a binding the document does not load). A script reaches
 * them through an object that an engine makes of the meta-object:
 *
 * @code
 * qmlEngine.rootContext()->setContextProperty(QStringLiteral("SessionControl"),
 *     QVariant::fromValue(qmlEngine.newQMetaObject(&BLSService::staticMetaObject)));
 * // QML: SessionControl.sessionStop
 * @endcode
 */
namespace BLSService {
Q_NAMESPACE_EXPORT(HXCOMMON_EXPORT)

// Deliberate: the lower-case spelling of the keys and the gap before 255 are part of the interface.
/// What the session is to do.
enum sessionControlState_t : int {
    sessionStop = 0, ///< End.
    sessionAbort = 1, ///< Abort.
    sessionPause = 2, ///< Pause.
    sessionStart = 3, ///< Start.
    sessionAutoStart = 4, ///< Start by itself.
    sessionConfig = 255, ///< Take a new configuration.
};
Q_ENUM_NS(sessionControlState_t)
} // namespace BLSService

#endif
