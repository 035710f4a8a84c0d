#ifndef HEADTILTSTATETYPES_H
#define HEADTILTSTATETYPES_H

#include "HXCommonExport.h"

#include <QObject>

/**
 * Tilt of the head.
 *
 * Scripts write `HeadTiltStateTypes.OpenAirway` once the application has called registerHXCommonTypes().
 */
namespace HeadTiltStateTypes {
Q_NAMESPACE_EXPORT(HXCOMMON_EXPORT)

/// How far the head is tilted.
enum headtiltstate_t : int {
    OpenAirway = 0, ///< Airway open.
    OpenAirway_HeadTilt = 1, ///< Airway open by head tilt.
    HyperExtension = 2, ///< Tilted too far back.
    HyperFlexion = 3, ///< Tilted too far forward.
    HyperFlexion2 = 4, ///< Like HyperFlexion, second degree.
    HyperFlexion3 = 5, ///< Like HyperFlexion, third degree.
};
Q_ENUM_NS(headtiltstate_t)
} // namespace HeadTiltStateTypes

#endif
