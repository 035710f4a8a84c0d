#ifndef BATTERY_H
#define BATTERY_H

#include "HXCommonExport.h"

#include <QObject>

/**
 * State of a manikin's batteries.
 *
 * Scripts write `Battery.BatteryLevelLow` once the application has called registerHXCommonTypes().
 */
namespace Battery {
Q_NAMESPACE_EXPORT(HXCOMMON_EXPORT)

/// How full a battery is.
enum BatteryLevels : int {
    BatteryLevelInvalid = -1, ///< Not known.
    BatteryLevelNormal = 0, ///< Normal.
    BatteryLevelLow = 1, ///< Low.
    BatteryLevelCritical = 2, ///< Critical.
    BatteryLevelFatal = 3, ///< Fatal.
};
Q_ENUM_NS(BatteryLevels)

/// Thresholds, in percent of charge.
enum BatteryThresholds : int {
    BatteryFullThreshold = 100, ///< Full.
    BatteryRechargeThreshold = 95, ///< Recharge.
    BatteryLowThreshold = 15, ///< Low.
    BatteryCriticalThreshold = 10, ///< Critical.
    BatteryFatalThreshold = 5, ///< Fatal.
    LBPBatteryFatalThreshold = 3, ///< Fatal for an LBP battery.
};
Q_ENUM_NS(BatteryThresholds)

/// What a BU battery is doing.
enum BUBatteryStatus : int {
    BatteryCharging = 0, ///< It is being charged.
    BatteryNotCharging = 1, ///< It is not being charged.
    BatteryDischarging = 2, ///< It is being discharged.
};
Q_ENUM_NS(BUBatteryStatus)
} // namespace Battery

#endif
