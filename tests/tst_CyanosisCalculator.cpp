#include <CyanosisCalculator.h>

#include "Cases.h"

#include <limits>

namespace {

constexpr int lowest = std::numeric_limits<int>::min();
constexpr int highest = std::numeric_limits<int>::max();

const struct {
    const char *name;
    int threshold, saturation;
    short upperOffset, lowerOffset, levelCount;
    double level;
} cases[] = {
    {"below threshold", 90, 89, 2, -8, 4, 0.0},
    {"at upper end", 90, 92, -2, -8, 4, 1.0},
    {"at lower end", 90, 98, 2, -8, 4, 3.0},
    {"between", 90, 90, 2, -8, 4, 2.3},
    {"between, at the ceiling", 90, 95, 2, -8, 4, 3.0},
    {"negative between", 90, 90, 60, -40, -4, 0.0},
    {"above 100", 100, 250, 2, -8, 4, 2.3},
    {"above 100 is not raised", 110, 101, 2, -120, 4, 0.0},
    {"100 is raised", 110, 100, 2, -120, 4, 3.0},
    {"raised to -lowerOffset", -5, -20, 3, -8, 4, 3.0},
    {"raised to 0", -5, -20, 3, 0, 4, 0.0},

    {"no levels, level 0", 90, 50, 2, -8, 0, -1.0},
    {"no levels, level 1", 90, 92, -2, -8, 0, -1.0},
    {"no levels, last level", 90, 98, 2, -8, 0, 0.0},
    {"negative levels, level 0", 90, 50, 2, -8, -32768, -32769.0},
    {"one level", 90, 92, -2, -8, 1, 0.0},

    {"lowest threshold", lowest, lowest, -32768, -32768, 4, 3.0},
    {"highest threshold", highest, highest, 32767, 32767, 4, 0.0},
    {"wrapped product", 1, 100, 32767, -32768, 4, 0.0},
};

} // namespace

class tst_CyanosisCalculator : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void calculates_data() { addCases(cases); }

    void calculates()
    {
        const auto &c = currentCase(cases);
        const auto level = [&c](bool enabled) {
            return CyanosisCalculator::CalculateCyanosisLevel(c.threshold, c.saturation, enabled,
                                                              c.upperOffset, c.lowerOffset, c.levelCount);
        };
        QCOMPARE(level(true), c.level);
        QCOMPARE(level(false), c.levelCount > 0 ? 0.0 : c.levelCount - 1.0);
    }
};

QTEST_APPLESS_MAIN(tst_CyanosisCalculator)
#include "tst_CyanosisCalculator.moc"
