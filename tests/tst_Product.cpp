#include <Product.h>

#include <QMetaEnum>
#include <QtTest>

#include <limits>

using namespace BM_HXCommon::Product;

class tst_Product : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void mapsManikinTypes();
    void namesManikinsByTheirProduct();
};

// What does not follow the rule below.
void tst_Product::mapsManikinTypes()
{
    constexpr int none = -1;
    const struct {
        int type, product;
        const char *name;
    } manikins[] = {
        {5, 26, "Model 26"},
        {150, 31, "Model 26"},
        {30, 19, "Model 19"},
        {40, none, "Model 60"},
        {41, none, "Model 61"},
        {42, none, "Model 62"},
        {44, none, "Model 63"},
        {200, 38, "Unknown Manikin"},
        {255, PRODUCT_UNKNOWN, "Not connected to simulator"},
        {0, none, "Unknown Manikin"},
        {45, none, "Unknown Manikin"},
        {std::numeric_limits<int>::min(), none, "Unknown Manikin"},
        {std::numeric_limits<int>::max(), none, "Unknown Manikin"},
    };
    for (const auto &manikin : manikins) {
        QCOMPARE(ManikinProductTypeMap.value(manikin.type, none), manikin.product);
        QCOMPARE(manikinTypeAsString(manikin.type), manikin.name);
    }
}

void tst_Product::namesManikinsByTheirProduct()
{
    QCOMPARE(ManikinProductTypeMap.size(), 28);
    const auto products = QMetaEnum::fromType<manufacturerProductId_t>();
    for (auto manikin = ManikinProductTypeMap.begin(); manikin != ManikinProductTypeMap.end(); ++manikin) {
        QVERIFY(products.valueToKey(manikin.value()));
        if (manikin.key() < 150)
            QCOMPARE(QString::fromLatin1(manikinTypeAsString(manikin.key())),
                     QStringLiteral("Model %1").arg(manikin.value(), 2, 10, QLatin1Char('0')));
    }
}

QTEST_APPLESS_MAIN(tst_Product)
#include "tst_Product.moc"
