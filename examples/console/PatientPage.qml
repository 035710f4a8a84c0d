import QtQuick 2.15; import QtQuick.Controls 2.15; import QtQuick.Layouts 1.15
import HXCommon 8.0; import Console 1.0

ColumnLayout {
    id: page
    readonly property var ages: [ // with usual years
        { text: qsTr("Adult"), value: "adult", years: 30 }, { text: qsTr("Child"), value: "child", years: 7 },
        { text: qsTr("Infant"), value: "infant", years: 2 }, { text: qsTr("Baby"), value: "baby", years: 0 }]
    readonly property string age: Library.ageGroup(years.value)
    property int rhythm: 7
    property int extraSystole: ExtraSystole.NoExtraSystole
    readonly property var extraSystoles: [ExtraSystole.NoExtraSystole, ExtraSystole.ExtraSystoleType2,
        ExtraSystole.ExtraSystoleType3, ExtraSystole.ExtraSystoleType4, ExtraSystole.ExtraSystoleType6]
    readonly property ECGConfig config: ECGLibraries.getECGConfig(age, rhythm)
    readonly property int heartRate: config.validateHeartRate(rate.asked)
    readonly property bool hasRate: config.rate_type !== RC_GUI.RateNone
    readonly property bool hasRatios: config.rate_type === RC_GUI.RateAVBlockRatio
    readonly property var rates: config.getParam(hasRatios ? "RatioHR" : "Rates") || []
    readonly property string ratio: (config.getParam("RatioTexts") || [])[rates.indexOf(heartRate)] || ""
    readonly property real cyanosis: Library.cyanosisLevel(threshold.got, saturation.got, shown.checked)

    function chooseAge(age) {
        if (page.age !== age)
            years.value = ages.find(known => known.value === age).years;
    }
    function chooseRhythm(id) {
        rhythm = id;
        const ratio = hasRatios ? config.getParam("Ratios").indexOf(config.getParam("DefaultRatio")) : -1;
        rate.asked = hasRatios ? rates[ratio] : config.validateHeartRate(config.heartrate_default);
        if (!config.isExtraSystoleAllowed(extraSystole))
            extraSystole = ExtraSystole.NoExtraSystole;
    }

    spacing: Theme.gap

    Card {
        title: page.hasRate ? qsTr("%1 beats/min").arg(page.heartRate) : qsTr("No heart rate: the rhythm is set by its amplitude")
        Trace {
            objectName: "trace"; rhythm: page.config.rhythmTypeName; rate: page.heartRate; ratio: page.ratio
            extraSystoles: page.extraSystole !== ExtraSystole.NoExtraSystole
            amplitude: amplitude.got / amplitude.to
            running: page.visible && !freeze.checked
            Layout.fillWidth: true; Layout.fillHeight: true
        }
        RowLayout {
            Label { text: qsTr("Schematic, not an ECG: it shows the kind of the rhythm, its rate or its amplitude."); color: Theme.faint }
            Item { Layout.fillWidth: true }
            Toggle { id: freeze; objectName: "freeze"; text: qsTr("Freeze"); hint: qsTr("Lets the trace stand still") }
        }
    }
    RowLayout {
        spacing: Theme.gap; Layout.fillHeight: false
        Card {
            title: qsTr("Rhythm"); Layout.preferredWidth: 3
            RowLayout {
                Choice { options: page.ages; value: page.age; onChosen: page.chooseAge(value) }
                NumberBox {
                    id: years
                    objectName: "years"; to: 110; value: 30; Layout.preferredWidth: 130
                    hint: qsTr("Age in years, which decides the age group"); Accessible.name: qsTr("Age in years")
                }
                Label { text: qsTr("years") }
            }
            Picker {
                objectName: "rhythm"; hint: qsTr("Rhythm, with its number"); Accessible.name: qsTr("Rhythm")
                model: Library.rhythms().map(id => ({ value: id, text: ECGLibraries.getECGConfig("", id).rhythmTypeName + " (" + id + ")" }))
                onActivated: page.chooseRhythm(currentValue); Layout.fillWidth: true
            }
            NamedSlider {
                id: rate
                name: qsTr("Heart rate"); unit: qsTr("beats/min"); hint: qsTr("The rhythm allows the part that is marked")
                visible: page.hasRate; to: 350; asked: 80; got: page.heartRate
                least: page.rates.length ? Math.min(...page.rates) : page.config.rate_type === RC_GUI.RateRange ? page.config.heartrate_min : got
                most: page.rates.length ? Math.max(...page.rates) : page.config.rate_type === RC_GUI.RateRange ? page.config.heartrate_max : got
            }
            NamedSlider {
                id: amplitude
                name: qsTr("Amplitude"); unit: qsTr("of %1").arg(to); hint: qsTr("Height of the waves"); visible: !page.hasRate
                from: least; to: 100; asked: 40
                least: Math.max(0, page.config.getParamValueAsInt("AmplitudeMin")); most: to
            }
            RowLayout {
                Layout.preferredHeight: Theme.touch
                Label { text: page.hasRatios ? qsTr("Ratio") : qsTr("Rates"); Layout.preferredWidth: 84 }
                Choice {
                    objectName: "rates"; value: page.heartRate; visible: options.length > 0; onChosen: rate.asked = value
                    options: page.rates.map((rate, i) => ({ value: rate, hint: qsTr("%1 beats/min").arg(rate),
                                                            text: page.hasRatios ? page.config.getParam("RatioTexts")[i] : String(rate) }))
                }
                Label {
                    text: [qsTr("%1 to %2 beats/min").arg(page.config.heartrate_min).arg(page.config.heartrate_max),
                           qsTr("Fixed"), qsTr("beats/min"), qsTr("P waves to beats"), qsTr("None")][page.config.rate_type]
                    Layout.fillWidth: true
                }
            }
            RowLayout {
                Label { text: qsTr("Extra-\nsystoles"); Layout.preferredWidth: 84 }
                Choice {
                    objectName: "extraSystoles"
                    options: page.extraSystoles.map(type => ({ text: type === 0 ? qsTr("None") : qsTr("Type %1").arg(type), value: type,
                                                               enabled: page.config.isExtraSystoleAllowed(type) }))
                    value: page.extraSystole; onChosen: page.extraSystole = value
                }
            }
        }
        Card {
            title: page.config.systolic_max === 0 ? qsTr("No pressure in this rhythm")
                : diastolic.asked > systolic.got ? qsTr("Diastolic is held at systolic") : qsTr("Blood pressure, cyanosis")
            Layout.preferredWidth: 2
            NamedSlider {
                id: systolic
                name: qsTr("Systolic"); unit: qsTr("mmHg"); to: 300; asked: 120; most: page.config.systolic_max; got: Math.min(asked, most)
                hint: qsTr("The rhythm allows the part that is marked")
            }
            NamedSlider {
                id: diastolic
                name: qsTr("Diastolic"); unit: qsTr("mmHg"); to: 300; asked: 80
                most: Math.min(page.config.diastolic_max, systolic.got); got: Math.min(asked, most)
                hint: qsTr("The rhythm and the systolic pressure allow the part that is marked")
            }
            NamedSlider { id: saturation; name: qsTr("Saturation"); unit: "%"; to: 100; asked: 86; hint: qsTr("Oxygen saturation") }
            NamedSlider { id: threshold; name: qsTr("Threshold"); unit: "%"; to: 100; asked: 85; hint: qsTr("Saturation from which on there is no full cyanosis") }
            RowLayout {
                Toggle { id: shown; objectName: "cyanosis"; text: qsTr("Shown"); checked: true; hint: qsTr("Whether the manikin shows cyanosis") }
                Rectangle {
                    objectName: "skin"
                    color: Qt.tint("#e8b89a", Qt.rgba(0.35, 0.4, 0.85, 0.15 * page.cyanosis))
                    radius: 6; Layout.fillWidth: true; Layout.preferredHeight: Theme.touch
                    Label { anchors.centerIn: parent; text: qsTr("Cyanosis level %1").arg(page.cyanosis.toFixed(1)); color: "black" }
                }
            }
        }
    }
}
