#ifndef ECGRHYTHMTABLE_H
#define ECGRHYTHMTABLE_H

#include "RC_GUI.h"

#include <array>
#include <initializer_list>
#include <optional>
#include <variant>

// The rhythms, and what each age changes about them. Heart rates in beats/min, pressures in mmHg. The
// compiler refuses a row that is incomplete or contradicts another; see the end of the file.
namespace ECGRhythmTable {

using namespace RC_GUI;
using namespace RC_GUI::ExtraSystole;

// How the heart rate of a rhythm is chosen: one type for each rate type.
struct Range {
    int defaultRate, min, max;
};
struct Fixed {
    int rate;
};
struct Discrete {
    int defaultRate;
    std::array<int, 3> rates;
};
struct Ratio {
    AVBlockRatios_t value;
    const char *text;
    int heartRate;
};
struct Ratios {
    AVBlockRatios_t defaultRatio;
    std::array<Ratio, 3> ratios;
};
struct Amplitude {
    int defaultAmplitude, min, max;
};

using ExtraSystoles = std::initializer_list<ExtraSystoleTypes_t>;

struct Rhythm {
    int id;
    const char *name;
    std::variant<Range, Fixed, Discrete, Ratios, Amplitude> rate;
    ExtraSystoles extraSystoles; // types that may be added; empty: not configured
    int systolicMax, diastolicMax;
};

constexpr ExtraSystoles none = {};
constexpr ExtraSystoles e1 = {NoExtraSystole, ExtraSystoleType2, ExtraSystoleType3, ExtraSystoleType6,
                              ExtraSystoleType4};
constexpr ExtraSystoles e2 = {NoExtraSystole, ExtraSystoleType3, ExtraSystoleType6, ExtraSystoleType4};

// Deliberate: the spelling of the names, the gaps and the order of the ids, and the name that 201 and 212
// share are part of the interface.
//
// Columns: id, name, rate (a range: default, lowest, highest), extrasystoles that may be added, highest
// systolic pressure, highest diastolic pressure.
// clang-format off
constexpr Rhythm rhythms[] = {
    {  7, "sinus",                          Range{80, 20, 200},   e1,   300, 200},
    {  8, "sinusWPW",                       Range{80, 20, 200},   e1,   300, 200},
    {  9, "hyperKalemia",                   Range{80, 20, 200},   e1,   300, 200},
    {200, "sinusIschaemia",                 Range{80, 20, 200},   e1,   300, 200},
    { 10, "sinusProlongedQT",               Range{80, 20, 200},   e1,   300, 200},
    {201, "sinusAMIInferior",               Range{80, 20, 200},   e1,   300, 200},
    {202, "sinusLBBB",                      Range{80, 20, 200},   e1,   300, 200},
    {203, "sinusRBBB",                      Range{80, 20, 200},   e1,   300, 200},
    { 95, "wanderingPacemaker",             Range{180, 140, 260}, none, 300, 200},
    {103, "aFlutter",                       Discrete{100, {75, 100, 150}}, none, 300, 200},
    {113, "aFib",                           Range{160, 50, 240},  none, 300, 200},
    {120, "junctionalRhythm",               Range{50, 40, 220},   none, 300, 200},
    {156, "avBlock1",                       Range{80, 20, 135},   e1,   300, 200},
    {166, "avBlock2I",  Ratios{AVBlock2I_4_3, {{{AVBlock2I_3_2, "3:2", 50}, {AVBlock2I_4_3, "4:3", 60},
                                                {AVBlock2I_5_4, "5:4", 65}}}}, e2, 300, 200},
    {169, "avBlock2II", Ratios{AVBlock2II_4_3, {{{AVBlock2II_2_1, "2:1", 40}, {AVBlock2II_3_2, "3:2", 55},
                                                 {AVBlock2II_4_3, "4:3", 60}}}}, e2, 300, 200},
    {172, "avBlock3",                       Range{40, 10, 50},    none, 300, 200},
    {132, "asystoleIdioventricular",        Range{80, 10, 100},   none, 300, 200},
    {138, "vt",                             Range{180, 120, 240}, none, 300, 200},
    {213, "vt2",                            Range{180, 120, 240}, none, 300, 200},
    {175, "torsadeDePoint",                 Fixed{180},           none, 300, 200},
    {146, "vf",                             Amplitude{40, 10, 100}, none, 0, 0},
    {148, "ventricularStandstill",          Fixed{0},             none, 0, 0},
    {149, "asystole",                       Fixed{0},             none, 0, 0},
    {174, "pacerVVI",                       Range{80, 50, 150},   none, 300, 200},
    {181, "svt",                            Range{160, 140, 260}, none, 300, 200},
    {204, "sinusPostIschaemia",             Range{80, 20, 200},   none, 300, 200},
    {205, "sinusAMIAnterior",               Range{80, 20, 200},   none, 300, 200},
    {206, "sinusAMIAnteriorLate",           Range{80, 20, 200},   none, 300, 200},
    {212, "sinusAMIInferior",               Range{80, 20, 200},   none, 300, 200},
    {207, "sinusHypertrofia",               Range{80, 20, 200},   none, 300, 200},
    {208, "sinusRightHypertrophia",         Range{80, 20, 200},   none, 300, 200},
    {209, "sinusRightHypertrophiaStressed", Range{80, 20, 200},   none, 300, 200},
    {210, "pacerDDD",                       Range{80, 20, 200},   none, 300, 200},
    {211, "pacerVVIMalefunction",           Range{80, 20, 200},   none, 300, 200},
};
// clang-format on

// What an age changes about a rhythm's rate range.
struct Limits {
    std::optional<int> min, max;
};

struct AgeAdaptation {
    std::initializer_list<int> rhythms;
    Limits infant;
    Limits baby;
};

constexpr std::nullopt_t unchanged = std::nullopt;

// Deliberate: default rates are the adults' at every age, and the rhythms from 204 on are not adapted.
//
// Columns: ids, {lowest, highest} rate of infants, {lowest, highest} rate of babies.
// clang-format off
constexpr AgeAdaptation ageAdaptations[] = {
    {{138},                               {unchanged, 320}, {120, 320}},
    {{95, 181},                           {90, 320},        {90, 320}},
    {{7, 8, 9, 10, 200, 201, 202, 203},   {unchanged, 240}, {unchanged, 240}},
    {{132},                               {14, unchanged},  {10, 100}},
    {{172},                               {20, 100},        {20, 100}},
};
// clang-format on

// ---- what the compiler checks

constexpr const Rhythm *find(int id)
{
    for (const Rhythm &rhythm : rhythms)
        if (rhythm.id == id)
            return &rhythm;
    return nullptr;
}

constexpr bool areRhythmsSound()
{
    for (const Rhythm &rhythm : rhythms) {
        const auto *const discrete = std::get_if<Discrete>(&rhythm.rate);
        const auto *const ratios = std::get_if<Ratios>(&rhythm.rate);
        // A list that is too short ends with zeros.
        if (find(rhythm.id) != &rhythm || (discrete && discrete->rates.back() == 0)
            || (ratios && ratios->ratios.back().heartRate == 0))
            return false;
    }
    return true;
}

constexpr bool areAdaptationsSound()
{
    for (const AgeAdaptation &adaptation : ageAdaptations)
        for (const int id : adaptation.rhythms)
            if (!find(id) || !std::holds_alternative<Range>(find(id)->rate))
                return false;
    return true;
}

static_assert(areRhythmsSound(), "an id twice, or a list too short");
static_assert(areAdaptationsSound(), "no such rhythm, or one without a range");

} // namespace ECGRhythmTable

#endif
