#ifndef CHESTRISETYPES_H
#define CHESTRISETYPES_H

#include "HXCommonExport.h"

#include <QObject>

/**
 * Chest rise.
 *
 * Scripts write `ChestRiseTypes.Off` once the application has called registerHXCommonTypes().
 */
namespace ChestRiseTypes {
Q_NAMESPACE_EXPORT(HXCOMMON_EXPORT)

/// How the chest rises in breathing.
enum chestRise_t : int {
    Off = 0, ///< Not at all.
    Normal = 1, ///< Normally.
    Shallow = 2, ///< Less than normal.
    Deep = 3, ///< More than normal.
    Irregular = 4, ///< Irregularly.
};
Q_ENUM_NS(chestRise_t)
} // namespace ChestRiseTypes

#endif
