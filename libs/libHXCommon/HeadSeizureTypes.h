#ifndef HEADSEIZURETYPES_H
#define HEADSEIZURETYPES_H

#include "HXCommonExport.h"

#include <QObject>

/**
 * Seizure of the head.
 *
 * Scripts write `HeadSeizureTypes.Off` once the application has called registerHXCommonTypes().
 */
namespace HeadSeizureTypes {
Q_NAMESPACE_EXPORT(HXCOMMON_EXPORT)

/// Whether the head seizes.
enum HeadSeizure_t : int {
    Off = 0, ///< No seizure.
    On = 1, ///< Seizure.
};
Q_ENUM_NS(HeadSeizure_t)
} // namespace HeadSeizureTypes

#endif
