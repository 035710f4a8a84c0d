#ifndef HXCOMMONQML_H
#define HXCOMMONQML_H

#include "HXCommonExport.h"

/**
 * @file
 * Makes the library known to the QML engine.
 */

/**
 * Registers everything of the library that scripts can use, under one module.
 * @ingroup qml
 *
 * @code
 * registerHXCommonTypes("HXCommon"); // before the engine loads its first document
 * QQmlApplicationEngine engine(QUrl(QStringLiteral("qrc:/Main.qml")));
 * @endcode
 *
 * A document imports it with the library's major version:
 *
 * @code{.qml}
 * import QtQml 2.15
 * import HXCommon 8.0
 *
 * ConnectivityChecker {
 *     url: OXUrls.url("account", "v1/health")
 *     onStatusChanged: console.log(status === ConnectivityChecker.SUCCESS ? "on line" : "off line")
 *     Component.onCompleted: startCheck()
 * }
 * @endcode
 *
 * - Namespaces of enumerations: those of the manikin states (Eyes, Battery, BLSService and the headers named
 *   ...Types), Product, RC_GUI and, by its own name, RC_GUI::ExtraSystole. A script reaches the keys that
 *   start with a capital letter.
 * - Types that documents make: ConnectivityChecker, PausingTimer.
 * - Types that C++ hands out: ECGConfig, ECGLibrary, FileSync.
 * - Single objects, which stay the library's own: ECGLibraries, OXUrls.
 *
 * The objects work after AppConfig::initialize(). Applications that want other names or fewer of them
 * register what they need themselves. To be called on the main thread, once for each module.
 * @param uri the name of the module, such as "HXCommon"
 */
HXCOMMON_EXPORT void registerHXCommonTypes(const char *uri);

#endif
