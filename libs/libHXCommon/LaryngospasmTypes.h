#ifndef LARYNGOSPASMTYPES_H
#define LARYNGOSPASMTYPES_H

#include "HXCommonExport.h"

#include <QObject>

/**
 * Laryngospasm.
 *
 * Scripts write `LaryngospasmTypes.Off` once the application has called registerHXCommonTypes().
 */
namespace LaryngospasmTypes {
Q_NAMESPACE_EXPORT(HXCOMMON_EXPORT)

/// How far the larynx is closed by a spasm.
enum laryngospasm_t : int {
    Off = 0, ///< No spasm.
    Partial = 1, ///< Partly closed.
    On = 2, ///< Closed.
};
Q_ENUM_NS(laryngospasm_t)
} // namespace LaryngospasmTypes

#endif
