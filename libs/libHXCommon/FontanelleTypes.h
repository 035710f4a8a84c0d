#ifndef FONTANELLETYPES_H
#define FONTANELLETYPES_H

#include "HXCommonExport.h"

#include <QObject>

/**
 * Fontanelle of an infant.
 *
 * Scripts write `FontanelleTypes.Off` once the application has called registerHXCommonTypes().
 */
namespace FontanelleTypes {
Q_NAMESPACE_EXPORT(HXCOMMON_EXPORT)

/// State of the fontanelle.
enum Fontanelle_t : int {
    Off = 0, ///< Normal.
    Bulging = 1, ///< Bulging.
};
Q_ENUM_NS(Fontanelle_t)
} // namespace FontanelleTypes

#endif
