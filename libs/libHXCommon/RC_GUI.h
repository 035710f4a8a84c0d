#ifndef RC_GUI_H
#define RC_GUI_H

#include "HXCommonExport.h"

#include <QObject>

/**
 * The enumerations of the user interface that rhythm configurations carry.
 *
 * They belong to the user interface; this header stands in for its own so that ECGConfig can name their
 * types. The library itself only fixes the integers below: rate types 0 to 4, conduction ratios as the rhythm
 * tables store them, extrasystole type 0 for none. All have the fixed type int: every integer, such as the -1
 * for "not configured", is a valid value.
 *
 * The library registers the types with the meta-type system when it is loaded; scripts pass and receive them
 * as numbers.
 */
namespace RC_GUI {
Q_NAMESPACE_EXPORT(HXCOMMON_EXPORT)

/// How the heart rate of a rhythm is chosen.
enum RateTypes_t : int {
    RateRange = 0, ///< Any rate between a minimum and a maximum.
    RateFixed = 1, ///< One rate that cannot be changed.
    RateDiscrete = 2, ///< One of a list of rates.
    RateAVBlockRatio = 3, ///< The rate that belongs to one of a list of AV-block conduction ratios.
    RateNone = 4, ///< No rate; the rhythm is set by its amplitude.
};
Q_ENUM_NS(RateTypes_t)

/// AV-block conduction ratios, "P waves : QRS complexes" by type of second-degree block.
enum AVBlockRatios_t : int {
    AVBlock2I_5_4 = 0, ///< Type I (Wenckebach), 5:4.
    AVBlock2I_4_3 = 1, ///< Type I (Wenckebach), 4:3.
    AVBlock2I_3_2 = 2, ///< Type I (Wenckebach), 3:2.
    AVBlock2II_4_3 = 3, ///< Type II (Mobitz), 4:3.
    AVBlock2II_3_2 = 4, ///< Type II (Mobitz), 3:2.
    AVBlock2II_2_1 = 5, ///< Type II (Mobitz), 2:1.
};
Q_ENUM_NS(AVBlockRatios_t)

/// Extrasystoles that may be added to a rhythm.
namespace ExtraSystole {
Q_NAMESPACE_EXPORT(HXCOMMON_EXPORT)

/// Kinds of extrasystoles; the user interface gives the numbers above 0 their clinical meaning.
enum Types_t : int {
    NoExtraSystole = 0, ///< None; every rhythm allows it.
    ExtraSystoleType2 = 2, ///< Type 2.
    ExtraSystoleType3 = 3, ///< Type 3.
    ExtraSystoleType4 = 4, ///< Type 4.
    ExtraSystoleType6 = 6, ///< Type 6.
};
Q_ENUM_NS(Types_t)
} // namespace ExtraSystole

/// The name of ExtraSystole::Types_t in method signatures.
using ExtraSystoleTypes_t = ExtraSystole::Types_t;
} // namespace RC_GUI

#endif
