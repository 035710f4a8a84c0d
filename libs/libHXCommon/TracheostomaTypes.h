#ifndef TRACHEOSTOMATYPES_H
#define TRACHEOSTOMATYPES_H

#include "HXCommonExport.h"

#include <QObject>

/**
 * Tracheostoma.
 *
 * Scripts write `TracheostomaTypes.Closed` once the application has called registerHXCommonTypes().
 */
namespace TracheostomaTypes {
Q_NAMESPACE_EXPORT(HXCOMMON_EXPORT)

/// How far it is open, in percent.
enum tracheostoma_t : int {
    Closed = 0, ///< Closed.
    Partial = 50, ///< Half open.
    Open = 100, ///< Open.
};
Q_ENUM_NS(tracheostoma_t)
} // namespace TracheostomaTypes

#endif
