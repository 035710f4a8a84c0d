#ifndef PHARYNGEALOBSTRUCTIONTYPES_H
#define PHARYNGEALOBSTRUCTIONTYPES_H

#include "HXCommonExport.h"

#include <QObject>

/**
 * Obstruction of the pharynx.
 *
 * Scripts write `PharyngealObstructionTypes.Off` once the application has called registerHXCommonTypes().
 */
namespace PharyngealObstructionTypes {
Q_NAMESPACE_EXPORT(HXCOMMON_EXPORT)

/// State of the pharynx.
enum pharyngealobstruction_t : int {
    Off = 0, ///< Free.
    Swelling = 1, ///< Obstructed by a swelling.
};
Q_ENUM_NS(pharyngealobstruction_t)
} // namespace PharyngealObstructionTypes

#endif
