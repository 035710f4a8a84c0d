#ifndef EYES_H
#define EYES_H

#include "HXCommonExport.h"

#include <QObject>

/**
 * Pupils, eyelids and reactions of the eyes.
 *
 * Scripts write `Eyes.PupilSizeSmall` once the application has called registerHXCommonTypes().
 */
namespace Eyes {
Q_NAMESPACE_EXPORT(HXCOMMON_EXPORT)

/// Size of a pupil.
enum pupilSize_t : int {
    PupilSizeSmall = 1, ///< Constricted.
    PupilSizeNormal = 2, ///< Normal.
    PupilSizeLarge = 3, ///< Dilated.
};
Q_ENUM_NS(pupilSize_t)

/// Position of the eyelids.
enum eyelidStatus_t : int {
    EyelidStatusClosed = 1, ///< Both closed.
    EyelidStatusHalfOpen = 2, ///< Both half open.
    EyelidStatusWideOpen = 3, ///< Both wide open.
    EyelidStatusRightOpenLeftClosed = 4, ///< Right open, left closed.
    EyelidStatusRightClosedLeftOpen = 5, ///< Right closed, left open.
};
Q_ENUM_NS(eyelidStatus_t)

/// How often the eyes blink.
enum blinkRate_t : int {
    BlinkRateOff = 1, ///< Never.
    BlinkRateInfrequently = 2, ///< Infrequently.
    BlinkRateNormal = 3, ///< Normally.
    BlinkRateFrequently = 4, ///< Frequently.
    BlinkRateOneLeft = 5, ///< Once, left eye.
    BlinkRateOneRight = 6, ///< Once, right eye.
    BlinkRateOneBoth = 7, ///< Once, both eyes.
    BlinkRateExtremelyFast = 8, ///< Extremely fast.
};
Q_ENUM_NS(blinkRate_t)

/// How the pupils react to light.
enum lightSensitivity_t : int {
    LightSensitivityNone = 1, ///< Neither reacts.
    LightSensitivityNormal = 2, ///< Both react normally.
    LightSensitivitySlow = 3, ///< Both react slowly.
    LightSensitivityRightDirectOnlyLeftNone = 4, ///< Right reacts to direct light only, left not at all.
    LightSensitivityRightNoneLeftDirectOnly = 5, ///< Left reacts to direct light only, right not at all.
};
Q_ENUM_NS(lightSensitivity_t)

/// Which eye is meant.
enum eyeSelection_t : int {
    EyeSelectionLeft = 1, ///< The left one.
    EyeSelectionRight = 2, ///< The right one.
    EyeSelectionBoth = 3, ///< Both.
};
Q_ENUM_NS(eyeSelection_t)
} // namespace Eyes

#endif
