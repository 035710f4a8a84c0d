#ifndef MOVEMENTTYPES_H
#define MOVEMENTTYPES_H

#include "HXCommonExport.h"

#include <QObject>

/**
 * Movement of the body.
 *
 * Scripts write `MovementTypes.HealthyMuscleTone` once the application has called registerHXCommonTypes().
 */
namespace MovementTypes {
Q_NAMESPACE_EXPORT(HXCOMMON_EXPORT)

/// How the body moves.
enum movementState_t : int {
    HealthyMuscleTone = 1, ///< At rest with healthy muscle tone.
    UnhealthyLimpness = 2, ///< Limp.
    SpontaneousMovement = 3, ///< Moves spontaneously.
    Seizure = 4, ///< Seizure of the body.
    SeizureLeftArm = 5, ///< Seizure of the left arm.
    SeizureRightArm = 6, ///< Seizure of the right arm.
};
Q_ENUM_NS(movementState_t)
} // namespace MovementTypes

#endif
