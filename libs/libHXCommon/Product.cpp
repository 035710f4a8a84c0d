#include "Product.h"

#include <optional>

using namespace BM_HXCommon::Product;

namespace {

struct Manikin {
    int type;
    std::optional<manufacturerProductId_t> product;
    const char *name; // null: no name
};

constexpr std::nullopt_t noProduct = std::nullopt;

// Deliberate: 200 has no name, 40 to 44 but 43 have no product, 150 is called by the name of 5, and 30 and 31
// are one product.
constexpr Manikin manikins[] = {
    {1, PRODUCT_MODEL_21, "Model 21"},
    {2, PRODUCT_MODEL_25, "Model 25"},
    {3, PRODUCT_MODEL_35, "Model 35"},
    {4, PRODUCT_MODEL_24, "Model 24"},
    {5, PRODUCT_MODEL_26, "Model 26"},
    {6, PRODUCT_MODEL_27, "Model 27"},
    {7, PRODUCT_MODEL_36, "Model 36"},
    {8, PRODUCT_MODEL_28, "Model 28"},
    {9, PRODUCT_MODEL_37, "Model 37"},
    {20, PRODUCT_MODEL_20, "Model 20"},
    {21, PRODUCT_MODEL_18, "Model 18"},
    {22, PRODUCT_MODEL_17, "Model 17"},
    {23, PRODUCT_MODEL_23, "Model 23"},
    {30, PRODUCT_MODEL_19, "Model 19"},
    {32, PRODUCT_MODEL_22, "Model 22"},
    {38, PRODUCT_MODEL_09, "Model 09"},
    {39, PRODUCT_MODEL_08, "Model 08"},
    {43, PRODUCT_MODEL_07, "Model 07"},
    {50, PRODUCT_MODEL_04, "Model 04"},
    {49, PRODUCT_MODEL_32, "Model 32"},
    {51, PRODUCT_MODEL_33, "Model 33"},
    {52, PRODUCT_MODEL_34, "Model 34"},
    {100, PRODUCT_MODEL_100, "Model 100"},
    {101, PRODUCT_MODEL_101, "Model 101"},
    {150, PRODUCT_MODEL_31, "Model 26"},
    {200, PRODUCT_MODEL_38, nullptr},
    {255, PRODUCT_UNKNOWN, "Not connected to simulator"},
    {31, PRODUCT_MODEL_19, "Model 19"},
    {40, noProduct, "Model 60"},
    {41, noProduct, "Model 61"},
    {42, noProduct, "Model 62"},
    {44, noProduct, "Model 63"},
};

QMap<int, int> productsByManikinType()
{
    QMap<int, int> products;
    for (const Manikin &manikin : manikins) {
        if (manikin.product)
            products.insert(manikin.type, *manikin.product);
    }
    return products;
}

} // namespace

[[gnu::init_priority(101)]] const QMap<int, int> BM_HXCommon::Product::ManikinProductTypeMap =
    productsByManikinType(); // clazy:exclude=non-pod-global-static

const char *manikinTypeAsString(int manikinType)
{
    for (const Manikin &manikin : manikins) {
        if (manikin.type == manikinType && manikin.name)
            return manikin.name;
    }
    return "Unknown Manikin";
}
