import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import HXCommon 8.0
import Console 1.0

ColumnLayout {
    id: page

    property string age: "adult"
    property int rhythm: 7
    property int asked: 80 // beats/min
    property int extraSystole: ExtraSystole.NoExtraSystole
    readonly property var extraSystoles: [ExtraSystole.NoExtraSystole, ExtraSystole.ExtraSystoleType2,
        ExtraSystole.ExtraSystoleType3, ExtraSystole.ExtraSystoleType4, ExtraSystole.ExtraSystoleType6]
    readonly property ECGConfig config: ECGLibraries.getECGConfig(age, rhythm)
    readonly property int heartRate: config.validateHeartRate(asked)
    readonly property bool hasRate: config.rate_type !== RC_GUI.RateNone
    readonly property bool hasRatios: config.rate_type === RC_GUI.RateAVBlockRatio
    readonly property real cyanosis: Library.cyanosisLevel(threshold.slider.value, saturation.slider.value,
                                                           shown.checked, 0, -6, 5)

    function list(key) { return config.getParam(key) || []; }
    // What there is to choose besides the slider: rates, or ratios by their texts.
    function choices() {
        return hasRatios ? list("RatioTexts").map((text, i) => ({ text: text, value: list("RatioHR")[i] }))
                         : list("Rates").map(rate => ({ text: String(rate), value: rate }));
    }
    function chooseRhythm(id) {
        rhythm = id;
        asked = hasRatios ? list("RatioHR")[list("Ratios").indexOf(config.getParam("DefaultRatio"))]
                          : config.heartrate_default;
        if (!config.isExtraSystoleAllowed(extraSystole))
            extraSystole = ExtraSystole.NoExtraSystole;
    }

    spacing: Theme.gap

    Card {
        title: page.hasRate ? page.heartRate + " beats/min" : "No heart rate: the rhythm is set by its amplitude"
        Trace {
            objectName: "trace"
            rate: page.heartRate
            amplitude: page.hasRate ? 0 : amplitude.slider.value / amplitude.slider.to
            running: page.visible && !freeze.checked
            Layout.fillWidth: true; Layout.fillHeight: true
        }
        RowLayout {
            Label {
                text: "Schematic, not an ECG: one shape for all rhythms; only the rate or the amplitude follows."
                color: Theme.faint
                Layout.fillWidth: true
            }
            Switch { id: freeze; objectName: "freeze"; text: "Freeze" }
        }
    }
    RowLayout {
        spacing: Theme.gap
        Layout.fillHeight: false
        Card {
            title: "Rhythm"
            Layout.preferredWidth: 3
            RowLayout {
                Choice { names: ["adult", "child", "infant", "baby"]; value: page.age; onChosen: page.age = value }
                SpinBox {
                    objectName: "years"
                    to: 110
                    value: 30
                    textFromValue: years => years + (years === 1 ? " year" : " years")
                    onValueModified: page.age = Library.ageGroup(value)
                }
            }
            ComboBox {
                objectName: "rhythm"
                model: Library.rhythms().map(id => ({ id: id, text: ECGLibraries.getECGConfig("", id).rhythmTypeName + " (" + id + ")" }))
                textRole: "text"
                valueRole: "id"
                onActivated: page.chooseRhythm(currentValue)
                Layout.fillWidth: true
            }
            LabelledSlider {
                id: rate
                name: "Heart rate"
                reading: page.asked === page.heartRate ? page.heartRate : page.asked + " → " + page.heartRate
                visible: page.hasRate
                slider { to: 350; onMoved: page.asked = rate.slider.value }
                slider.onPressedChanged: if (!rate.slider.pressed) page.asked = page.heartRate
                Binding { target: rate.slider; property: "value"; value: page.heartRate; when: !rate.slider.pressed }
            }
            LabelledSlider {
                id: amplitude
                name: "Amplitude"
                visible: !page.hasRate
                slider.from: page.config.getParamValueAsInt("AmplitudeMin")
                slider.to: page.config.getParamValueAsInt("AmplitudeMax")
                slider.value: page.config.getParamValueAsInt("DefaultAmplitude")
            }
            RowLayout {
                Layout.preferredHeight: Theme.touch
                Label { text: page.hasRatios ? "Ratio" : "Rates"; Layout.preferredWidth: 84 }
                Choice { objectName: "rates"; options: page.choices(); value: page.heartRate; onChosen: page.asked = value }
                Label {
                    text: page.config.heartrate_min + " to " + page.config.heartrate_max
                    visible: page.config.rate_type === RC_GUI.RateRange
                    Layout.fillWidth: true
                }
            }
            RowLayout {
                Label { text: "Extra-\nsystoles"; Layout.preferredWidth: 84 }
                Choice {
                    objectName: "extraSystoles"
                    options: page.extraSystoles.map(type => ({ text: type === 0 ? "None" : "Type " + type, value: type,
                                                               enabled: page.config.isExtraSystoleAllowed(type) }))
                    value: page.extraSystole
                    onChosen: page.extraSystole = value
                }
            }
        }
        Card {
            title: "Blood pressure and cyanosis"
            Layout.preferredWidth: 2
            LabelledSlider { name: "Systolic"; reading: slider.value + " of " + slider.to; slider { to: page.config.systolic_max; value: 120 } }
            LabelledSlider { name: "Diastolic"; reading: slider.value + " of " + slider.to; slider { to: page.config.diastolic_max; value: 80 } }
            LabelledSlider { id: saturation; name: "Saturation"; reading: slider.value + " %"; slider { to: 100; value: 86 } }
            LabelledSlider { id: threshold; name: "Threshold"; reading: slider.value + " %"; slider { to: 100; value: 85 } }
            RowLayout {
                Switch { id: shown; objectName: "cyanosis"; text: "Shown"; checked: true }
                Rectangle {
                    objectName: "skin"
                    color: Qt.tint("#e8b89a", Qt.rgba(0.35, 0.4, 0.85, 0.15 * page.cyanosis))
                    radius: 6
                    Layout.fillWidth: true; Layout.preferredHeight: Theme.touch
                    Label { anchors.centerIn: parent; text: "Cyanosis level " + page.cyanosis.toFixed(1); color: "black" }
                }
            }
            Item { Layout.fillHeight: true }
        }
    }
}
