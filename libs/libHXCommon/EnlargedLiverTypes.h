#ifndef ENLARGEDLIVERTYPES_H
#define ENLARGEDLIVERTYPES_H

#include "HXCommonExport.h"

#include <QObject>

/**
 * Size of the liver.
 *
 * Scripts write `EnlargedLiverTypes.Off` once the application has called registerHXCommonTypes().
 */
namespace EnlargedLiverTypes {
Q_NAMESPACE_EXPORT(HXCOMMON_EXPORT)

/// State of the liver.
enum enlargedLiver_t : int {
    Off = 0, ///< Normal.
    Enlarged = 1, ///< Enlarged.
};
Q_ENUM_NS(enlargedLiver_t)
} // namespace EnlargedLiverTypes

#endif
