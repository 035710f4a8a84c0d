#ifndef LUNGCOMPLIANCETYPES_H
#define LUNGCOMPLIANCETYPES_H

#include "HXCommonExport.h"

#include <QObject>

/**
 * Compliance of a lung.
 *
 * Scripts write `LungComplianceTypes.Zero` once the application has registered the meta-object with
 * qmlRegisterUncreatableMetaObject().
 */
namespace LungComplianceTypes {
Q_NAMESPACE_EXPORT(HXCOMMON_EXPORT)

// Deliberate: not in numeric order; scripts list the keys in this one.
/// Compliance in percent of normal.
enum lungCompliance_t : int {
    Zero = 0, ///< None.
    SixtySeven = 67, ///< 67 %.
    Fifty = 50, ///< 50 %.
    ThirtyThree = 33, ///< 33 %.
    Hundred = 100, ///< Normal.
};
Q_ENUM_NS(lungCompliance_t)
} // namespace LungComplianceTypes

#endif
