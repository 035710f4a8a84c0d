#ifndef AIRWAYBLOCKAGETYPES_H
#define AIRWAYBLOCKAGETYPES_H

#include "HXCommonExport.h"

#include <QObject>

/**
 * Blockage of the left and the right airway.
 *
 * Scripts write `AirwayBlockageTypes.NoBlockage` once the application has called registerHXCommonTypes().
 */
namespace AirwayBlockageTypes {
Q_NAMESPACE_EXPORT(HXCOMMON_EXPORT)

// Deliberate: 6, 7, 9 and 11 do not exist.
/**
 * State of both airways: the sum of 1 (left blocked), 2 (right blocked), 4 (right partly blocked) and
 * 8 (left partly blocked). Sums that would say two things of one airway do not exist.
 */
enum Types : int {
    NoBlockage = 0, ///< Both airways are clear.
    LeftBlockedRightClear = 1, ///< Only the left airway is blocked.
    LeftClearRightBlocked = 2, ///< Only the right airway is blocked.
    BothBlocked = 3, ///< Both airways are blocked.
    LeftClearRightPartial = 4, ///< Only the right airway is partly blocked.
    LeftBlockedRightPartial = 5, ///< Left blocked, right partly blocked.
    LeftPartialRightClear = 8, ///< Only the left airway is partly blocked.
    LeftPartialRightBlocked = 10, ///< Left partly blocked, right blocked.
    BothPartial = 12, ///< Both airways are partly blocked.
};
Q_ENUM_NS(Types)
} // namespace AirwayBlockageTypes

#endif
