#include "CyanosisCalculator.h"

#include <algorithm>
#include <cstdint>

namespace {

constexpr int highestSaturation = 100;

int boundedSaturation(int saturation, short lowerOffset)
{
    return saturation > highestSaturation ? highestSaturation : std::max(saturation, -lowerOffset);
}

// Unsigned, so that extreme offsets wrap at 32 bits without undefined behaviour.
std::int32_t percentage(int saturation, int threshold, short upperOffset, short lowerOffset)
{
    const std::uint32_t aboveThreshold = std::uint32_t(saturation + upperOffset) - std::uint32_t(threshold);
    return std::int32_t(aboveThreshold * std::uint32_t(upperOffset - lowerOffset));
}

} // namespace

double CyanosisCalculator::CalculateCyanosisLevel(int threshold, int saturation, bool enabled,
                                                  short upperOffset, short lowerOffset, short levelCount)
{
    const int bounded = boundedSaturation(saturation, lowerOffset);
    double level = 0.0;
    if (enabled && bounded != 0 && bounded >= threshold) {
        if (bounded + upperOffset <= threshold) {
            level = 1.0;
        } else {
            level = bounded + lowerOffset >= threshold
                ? levelCount - 1
                : percentage(bounded, threshold, upperOffset, lowerOffset) / 100.0 * levelCount + 1.5;
            if (level < 0.0)
                return 0.0;
        }
    }
    // Deliberate: level 0 has this ceiling, too, and becomes -1 when there are no levels.
    return level >= levelCount ? levelCount - 1 : level;
}
