#ifndef PRODUCT_H
#define PRODUCT_H

#include "HXCommonExport.h"
#include "HXCommonVendorIds.h"

#include <QMap>
#include <QObject>

/**
 * @file
 * Identification of devices and the display names of manikin types.
 */

/**
 * @namespace BM_HXCommon
 * Holds Product.
 */

/**
 * Identification of devices: what they report over USB and Bluetooth, and which product a manikin is.
 *
 * Scripts write `Product.PRODUCT_UNKNOWN` once the application has called registerHXCommonTypes().
 *
 * @code
 * using namespace BM_HXCommon;
 * const int product = Product::ManikinProductTypeMap.value(manikinType, Product::PRODUCT_UNKNOWN);
 * label->setText(QString::fromLatin1(manikinTypeAsString(manikinType)));
 * @endcode
 */
namespace BM_HXCommon::Product {
Q_NAMESPACE_EXPORT(HXCOMMON_EXPORT)

/**
 * Vendor number of a device. Those of the maker are set when the library is configured, by
 * HXCOMMON_BRANTEL_BLE_ID and HXCOMMON_BRANTEL_USB_ID; the defaults are numbers reserved for prototypes.
 */
enum manufacturerId_t : int {
    MANUFACTURER_BRANTEL_BLE = HXCOMMON_BRANTEL_BLE_ID, ///< Bluetooth company identifier of the maker.
    MANUFACTURER_BRANTEL_USB = HXCOMMON_BRANTEL_USB_ID, ///< USB vendor id of the maker.
    MANUFACTURER_STMICROELECTRONICS = 1155, ///< 0x0483, USB vendor id of STMicroelectronics.
};
Q_ENUM_NS(manufacturerId_t)

// Deliberate: 10, 11, 29, 30 and 43 to 47 are not assigned.
/// Product id of a device; for a device of the maker the number of its model.
enum manufacturerProductId_t : int {
    PRODUCT_UNKNOWN = 0, ///< No known device.
    PRODUCT_MODEL_01 = 1, ///< Device model 1.
    PRODUCT_MODEL_02 = 2, ///< Device model 2.
    PRODUCT_MODEL_03 = 3, ///< Device model 3.
    PRODUCT_MODEL_04 = 4, ///< Device model 4.
    PRODUCT_MODEL_05 = 5, ///< Device model 5.
    PRODUCT_MODEL_06 = 6, ///< Device model 6.
    PRODUCT_MODEL_07 = 7, ///< Device model 7.
    PRODUCT_MODEL_08 = 8, ///< Device model 8.
    PRODUCT_MODEL_09 = 9, ///< Device model 9.
    PRODUCT_MODEL_12 = 12, ///< Device model 12.
    PRODUCT_MODEL_13 = 13, ///< Device model 13.
    PRODUCT_MODEL_14 = 14, ///< Device model 14.
    PRODUCT_MODEL_15 = 15, ///< Device model 15.
    PRODUCT_MODEL_16 = 16, ///< Device model 16.
    PRODUCT_MODEL_17 = 17, ///< Device model 17.
    PRODUCT_MODEL_18 = 18, ///< Device model 18.
    PRODUCT_MODEL_19 = 19, ///< Device model 19.
    PRODUCT_MODEL_20 = 20, ///< Device model 20.
    PRODUCT_MODEL_21 = 21, ///< Device model 21.
    PRODUCT_MODEL_22 = 22, ///< Device model 22.
    PRODUCT_MODEL_23 = 23, ///< Device model 23.
    PRODUCT_MODEL_24 = 24, ///< Device model 24.
    PRODUCT_MODEL_25 = 25, ///< Device model 25.
    PRODUCT_MODEL_26 = 26, ///< Device model 26.
    PRODUCT_MODEL_27 = 27, ///< Device model 27.
    PRODUCT_MODEL_28 = 28, ///< Device model 28.
    PRODUCT_MODEL_31 = 31, ///< Device model 31.
    PRODUCT_MODEL_32 = 32, ///< Device model 32.
    PRODUCT_MODEL_33 = 33, ///< Device model 33.
    PRODUCT_MODEL_34 = 34, ///< Device model 34.
    PRODUCT_MODEL_35 = 35, ///< Device model 35.
    PRODUCT_MODEL_36 = 36, ///< Device model 36.
    PRODUCT_MODEL_37 = 37, ///< Device model 37.
    PRODUCT_MODEL_38 = 38, ///< Device model 38.
    PRODUCT_MODEL_39 = 39, ///< Device model 39.
    PRODUCT_MODEL_40 = 40, ///< Device model 40.
    PRODUCT_MODEL_41 = 41, ///< Device model 41.
    PRODUCT_MODEL_42 = 42, ///< Device model 42.
    PRODUCT_MODEL_48 = 48, ///< Device model 48.
    PRODUCT_MODEL_100 = 100, ///< Device model 100.
    PRODUCT_MODEL_101 = 101, ///< Device model 101.
    PRODUCT_USE_EXTENDED_ID = 128, ///< The device reports its product in an extended id.
    PRODUCT_ST_DFU_MODE = 57105, ///< 0xDF11, an STM32 in its USB firmware-upgrade boot loader.
    PRODUCT_ST_STM32F407 = 22336, ///< 0x5740, an STM32F407 with its USB serial firmware.
};
Q_ENUM_NS(manufacturerProductId_t)

/// Product (manufacturerProductId_t) of each manikin type; filled when the library is loaded. Some manikin
/// types have a name but no product. `olvex-doctor --products` lists all types.
extern HXCOMMON_EXPORT const QMap<int, int> ManikinProductTypeMap;
} // namespace BM_HXCommon::Product

/**
 * The display name of a manikin type, in English.
 * @ingroup states
 *
 * @return "Model 21" and the like; "Not connected to simulator" for 255; "Unknown Manikin" for a number
 * without a name. The text lives as long as the library and is never null.
 */
extern "C" HXCOMMON_EXPORT const char *manikinTypeAsString(int manikinType);

#endif
