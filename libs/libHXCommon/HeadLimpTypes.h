#ifndef HEADLIMPTYPES_H
#define HEADLIMPTYPES_H

#include "HXCommonExport.h"

#include <QObject>

/**
 * Muscle tone of the neck.
 *
 * Scripts write `HeadLimpTypes.Stiff` once the application has called registerHXCommonTypes().
 */
namespace HeadLimpTypes {
Q_NAMESPACE_EXPORT(HXCOMMON_EXPORT)

/// How the head is held.
enum HeadLimp_t : int {
    Stiff = 0, ///< Stiffly.
    Limp = 1, ///< Limply.
};
Q_ENUM_NS(HeadLimp_t)
} // namespace HeadLimpTypes

#endif
