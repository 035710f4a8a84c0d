#ifndef LUNGCOMPLIANCETYPES_H
#define LUNGCOMPLIANCETYPES_H

#include "HXCommonExport.h"

#include <QObject>

/**
 * Compliance of a lung.
 *
 * Scripts write `LungComplianceTypes.Zero` once the application has called registerHXCommonTypes().
 */
namespace LungComplianceTypes {
Q_NAMESPACE_EXPORT(HXCOMMON_EXPORT)

// Deliberate: not in numeric order. Scripts that list the keys see them as they are declared.
/// Compliance in percent.
enum lungCompliance_t : int {
    Zero = 0, ///< 0 %.
    SixtySeven = 67, ///< 67 %.
    Fifty = 50, ///< 50 %.
    ThirtyThree = 33, ///< 33 %.
    Hundred = 100, ///< 100 %.
};
Q_ENUM_NS(lungCompliance_t)
} // namespace LungComplianceTypes

#endif
