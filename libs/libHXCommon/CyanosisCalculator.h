#ifndef CYANOSISCALCULATOR_H
#define CYANOSISCALCULATOR_H

#include "HXCommonExport.h"

/**
 * Turns an oxygen saturation into the level of a manikin's cyanosis display.
 *
 * @code
 * const double level = CyanosisCalculator::CalculateCyanosisLevel(threshold, saturation, isCyanosisEnabled,
 *                                                                 upperOffset, lowerOffset, levelCount);
 * @endcode
 *
 * Stateless and thread-safe.
 */
class HXCOMMON_EXPORT CyanosisCalculator {
public:
    CyanosisCalculator() = delete;

    /**
     * The cyanosis level, 0 to @p levelCount - 1, not rounded.
     *
     * First the saturation is bounded: above 100 it counts as 100, otherwise it is raised to at least
     * -@p lowerOffset. Then the first line that applies gives the level:
     *
     * | condition | level |
     * |---|---|
     * | not @p enabled, or saturation = 0, or saturation < @p threshold | 0 |
     * | saturation + @p upperOffset <= @p threshold | 1 |
     * | saturation + @p lowerOffset >= @p threshold | @p levelCount - 1 |
     * | otherwise | p / 100.0 * @p levelCount + 1.5 |
     *
     * Here p is (saturation + @p upperOffset - @p threshold) * (@p upperOffset - @p lowerOffset), an integer
     * of 32 bits that wraps.
     *
     * A negative level from the last two lines is returned as 0. Any other level of @p levelCount or more
     * becomes @p levelCount - 1; that is negative when there are no levels.
     *
     * @param threshold the saturation from which on there is a level; its meaning and that of the offsets is
     *        the caller's
     * @param saturation the oxygen saturation in percent
     * @param enabled whether cyanosis is shown at all
     * @param upperOffset offset to the saturation that decides about level 1
     * @param lowerOffset offset to the saturation that decides about the last level
     * @param levelCount number of levels of the display
     */
    static double CalculateCyanosisLevel(int threshold, int saturation, bool enabled, short upperOffset,
                                         short lowerOffset, short levelCount);
};

#endif
