#ifndef CAPILLARYREFILLTYPES_H
#define CAPILLARYREFILLTYPES_H

#include "HXCommonExport.h"

#include <QObject>

/**
 * Capillary refill.
 *
 * Scripts write `CapillaryRefillTypes.Off` once the application has called registerHXCommonTypes().
 */
namespace CapillaryRefillTypes {
Q_NAMESPACE_EXPORT(HXCOMMON_EXPORT)

/// Whether capillary refill is shown.
enum capillaryRefill_t : int {
    Off = 0, ///< Not shown.
    On = 1, ///< Shown.
};
Q_ENUM_NS(capillaryRefill_t)
} // namespace CapillaryRefillTypes

#endif
