#include <CyanosisCalculator.h>

#include <QtTest>

#include <limits>

class tst_CyanosisCalculator : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void calculates_data();
    void calculates();
    void isOffWhenDisabled();
};

void tst_CyanosisCalculator::calculates_data()
{
    QTest::addColumn<int>("threshold");
    QTest::addColumn<int>("saturation");
    QTest::addColumn<int>("upperOffset");
    QTest::addColumn<int>("lowerOffset");
    QTest::addColumn<int>("levelCount");
    QTest::addColumn<double>("level");

    constexpr int lowest = std::numeric_limits<int>::min();
    constexpr int highest = std::numeric_limits<int>::max();
    QTest::newRow("below threshold") << 90 << 89 << 2 << -8 << 4 << 0.0;
    QTest::newRow("at upper end") << 90 << 92 << -2 << -8 << 4 << 1.0;
    QTest::newRow("at lower end") << 90 << 98 << 2 << -8 << 4 << 3.0;
    QTest::newRow("between") << 90 << 90 << 2 << -8 << 4 << 2.3;
    QTest::newRow("between, one more") << 90 << 91 << 2 << -8 << 4 << 2.7;
    QTest::newRow("between, at the ceiling") << 90 << 95 << 2 << -8 << 4 << 3.0;
    QTest::newRow("negative between") << 90 << 90 << 60 << -40 << -4 << 0.0;
    QTest::newRow("above 100") << 100 << 250 << 2 << -8 << 4 << 2.3;
    QTest::newRow("100") << 100 << 100 << 2 << -8 << 4 << 2.3;
    QTest::newRow("above 100 is not raised") << 110 << 101 << 2 << -120 << 4 << 0.0;
    QTest::newRow("100 is raised") << 110 << 100 << 2 << -120 << 4 << 3.0;
    QTest::newRow("raised to -lowerOffset") << -5 << -20 << 3 << -8 << 4 << 3.0;
    QTest::newRow("raised, to 0") << -5 << -20 << 3 << 0 << 4 << 0.0;
    QTest::newRow("saturation 0") << -5 << 0 << 3 << 8 << 4 << 0.0;

    QTest::newRow("no levels, level 0") << 90 << 50 << 2 << -8 << 0 << -1.0;
    QTest::newRow("no levels, level 1") << 90 << 92 << -2 << -8 << 0 << -1.0;
    QTest::newRow("no levels, last") << 90 << 98 << 2 << -8 << 0 << 0.0;
    QTest::newRow("negative levels, last") << 90 << 98 << 2 << -8 << -32768 << 0.0;
    QTest::newRow("negative levels, level 0") << 90 << 50 << 2 << -8 << -32768 << -32769.0;
    QTest::newRow("one level") << 90 << 92 << -2 << -8 << 1 << 0.0;

    QTest::newRow("lowest threshold") << lowest << lowest << -32768 << -32768 << 4 << 3.0;
    QTest::newRow("highest threshold") << highest << highest << 32767 << 32767 << 4 << 0.0;
    QTest::newRow("wrapped product") << 1 << 100 << 32767 << -32768 << 4 << 0.0;
    QTest::newRow("wrapped product, negative levels") << 1 << 100 << 32767 << -32768 << -100 << -101.0;
}

void tst_CyanosisCalculator::calculates()
{
    QFETCH(int, threshold);
    QFETCH(int, saturation);
    QFETCH(int, upperOffset);
    QFETCH(int, lowerOffset);
    QFETCH(int, levelCount);
    QTEST(CyanosisCalculator::CalculateCyanosisLevel(threshold, saturation, true, short(upperOffset),
                                                     short(lowerOffset), short(levelCount)),
          "level");
}

void tst_CyanosisCalculator::isOffWhenDisabled()
{
    for (const int saturation : {std::numeric_limits<int>::min(), 0, 95, std::numeric_limits<int>::max()})
        QCOMPARE(CyanosisCalculator::CalculateCyanosisLevel(90, saturation, false, 2, -8, 4), 0.0);
    QCOMPARE(CyanosisCalculator::CalculateCyanosisLevel(90, 95, false, 2, -8, 0), -1.0);
}

QTEST_APPLESS_MAIN(tst_CyanosisCalculator)
#include "tst_CyanosisCalculator.moc"
