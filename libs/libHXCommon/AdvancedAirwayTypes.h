#ifndef ADVANCEDAIRWAYTYPES_H
#define ADVANCEDAIRWAYTYPES_H

#include "HXCommonExport.h"

#include <QObject>

/**
 * Advanced airway device in place.
 *
 * Scripts write `AdvancedAirwayTypes.None` once the application has called registerHXCommonTypes().
 *
 * `None` is a macro of the X11 headers: include them after this one.
 */
namespace AdvancedAirwayTypes {
Q_NAMESPACE_EXPORT(HXCOMMON_EXPORT)

/// The device.
enum advancedairway_t : int {
    None = 0, ///< No device.
    Endotracheal = 1, ///< Endotracheal tube.
    Combitube = 2, ///< Oesophageal-tracheal double-lumen tube.
    LMA = 3, ///< Laryngeal mask airway.
    LMAFastrach = 4, ///< Intubating laryngeal mask airway.
    Laryngealtube = 5, ///< Laryngeal tube.
};
Q_ENUM_NS(advancedairway_t)
} // namespace AdvancedAirwayTypes

#endif
