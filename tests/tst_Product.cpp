#include <Product.h>

#include <QMetaEnum>
#include <QtTest>

#include <limits>

using namespace BM_HXCommon::Product;

class tst_Product : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void mapsManikinTypes_data();
    void mapsManikinTypes();
    void namesManikinsByTheirProduct();
};

void tst_Product::mapsManikinTypes_data()
{
    QTest::addColumn<int>("product");
    QTest::addColumn<QString>("name");
    const auto row = [](int type, int product, const char *name) {
        QTest::addRow("%d", type) << product << QString::fromLatin1(name);
    };
    constexpr int none = -1;
    row(5, 26, "Model 26");
    row(150, 31, "Model 26");
    row(30, 19, "Model 19");
    row(40, none, "Model 60");
    row(41, none, "Model 61");
    row(42, none, "Model 62");
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

void tst_Product::namesManikinsByTheirProduct()
{
    QCOMPARE(ManikinProductTypeMap.size(), 28);
    const auto products = QMetaEnum::fromType<manufacturerProductId_t>();
    for (auto manikin = ManikinProductTypeMap.begin(); manikin != ManikinProductTypeMap.end(); ++manikin) {
        QVERIFY(products.valueToKey(manikin.value()));
        if (manikin.key() < 150) // the others have a name of their own
            QCOMPARE(QString::fromLatin1(manikinTypeAsString(manikin.key())),
                     QStringLiteral("Model %1").arg(manikin.value(), 2, 10, QLatin1Char('0')));
    }
}

QTEST_APPLESS_MAIN(tst_Product)
#include "tst_Product.moc"
