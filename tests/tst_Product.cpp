#include <Product.h>

#include <QMetaEnum>
#include <QtTest>

#include <limits>

using namespace BM_HXCommon::Product;

class tst_Product : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void mapsManikinsToKnownProducts();
    void mapsManikinTypes_data();
    void mapsManikinTypes();
    void namesManikinsByTheirModel();
};

void tst_Product::mapsManikinsToKnownProducts()
{
    QCOMPARE(ManikinProductTypeMap.size(), 28);
    const auto products = QMetaEnum::fromType<manufacturerProductId_t>();
    for (const int product : ManikinProductTypeMap)
        QVERIFY2(products.valueToKey(product), qPrintable(QString::number(product)));
}

void tst_Product::mapsManikinTypes_data()
{
    QTest::addColumn<int>("product");
    QTest::addColumn<QString>("name");
    const auto row = [](int type, int product, const char *name) {
        QTest::addRow("%d", type) << product << QString::fromLatin1(name);
    };
    constexpr int none = -1;
    row(1, 21, "Model 21");
    row(5, 26, "Model 26");
    row(150, 31, "Model 26");
    row(30, 19, "Model 19");
    row(31, 19, "Model 19");
    row(38, 9, "Model 09");
    row(49, 32, "Model 32");
    row(50, 4, "Model 04");
    row(100, 100, "Model 100");
    row(40, none, "Model 60");
    row(41, none, "Model 61");
    row(42, none, "Model 62");
    row(43, 7, "Model 07");
    row(44, none, "Model 63");
    row(200, 38, "Unknown Manikin");
    row(255, PRODUCT_UNKNOWN, "Not connected to simulator");
    row(0, none, "Unknown Manikin");
    row(45, none, "Unknown Manikin");
    row(std::numeric_limits<int>::min(), none, "Unknown Manikin");
    row(std::numeric_limits<int>::max(), none, "Unknown Manikin");
}

void tst_Product::mapsManikinTypes()
{
    const int type = QByteArray(QTest::currentDataTag()).toInt();
    QTEST(ManikinProductTypeMap.value(type, -1), "product");
    QTEST(QString::fromLatin1(manikinTypeAsString(type)), "name");
}

// But for 150, 200 and 255, a manikin is called by the number of its product.
void tst_Product::namesManikinsByTheirModel()
{
    for (auto manikin = ManikinProductTypeMap.begin(); manikin != ManikinProductTypeMap.end(); ++manikin) {
        if (manikin.key() < 150)
            QCOMPARE(QString::fromLatin1(manikinTypeAsString(manikin.key())),
                     QStringLiteral("Model %1").arg(manikin.value(), 2, 10, QLatin1Char('0')));
    }
}

QTEST_APPLESS_MAIN(tst_Product)
#include "tst_Product.moc"
