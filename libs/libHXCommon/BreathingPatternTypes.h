#ifndef BREATHINGPATTERNTYPES_H
#define BREATHINGPATTERNTYPES_H

#include "HXCommonExport.h"

#include <QObject>

/**
 * Breathing pattern.
 *
 * Scripts write `BreathingPatternTypes.SeeSaw` once the application has called registerHXCommonTypes().
 */
namespace BreathingPatternTypes {
Q_NAMESPACE_EXPORT(HXCOMMON_EXPORT)

/// How chest and abdomen move in breathing.
enum breathingPattern_t : int {
    Minus1 = -1, ///< The value -1.
    Normal = 0, ///< Normal.
    Retraction = 1, ///< With retractions.
    SeeSaw = 2, ///< Chest and abdomen move against each other.
};
Q_ENUM_NS(breathingPattern_t)
} // namespace BreathingPatternTypes

#endif
