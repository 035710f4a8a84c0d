import QtQuick 2.15; import QtQuick.Controls 2.15; import QtQuick.Layouts 1.15
import HXCommon 8.0; import Console 1.0

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
    readonly property real cyanosis: Library.cyanosisLevel(threshold.slider.value, saturation.slider.value, shown.checked)

    // What there is to choose besides the slider: rates, or ratios by their texts.
    function choices() {
        const rates = config.getParam(hasRatios ? "RatioHR" : "Rates") || [];
        return rates.map((rate, i) => ({ text: hasRatios ? config.getParam("RatioTexts")[i] : String(rate), value: rate }));
    }
    function chooseRhythm(id) {
        rhythm = id;
        const ratio = hasRatios ? config.getParam("Ratios").indexOf(config.getParam("DefaultRatio")) : -1;
        asked = hasRatios ? config.getParam("RatioHR")[ratio] : config.heartrate_default;
        snap();
        if (!config.isExtraSystoleAllowed(extraSystole))
            extraSystole = ExtraSystole.NoExtraSystole;
    }
    function snap() {
        if (!rate.slider.pressed)
            rate.slider.value = asked = heartRate;
    }

    component NamedSlider: RowLayout {
        property alias name: label.text
        property alias reading: reading.text
        property alias slider: slider

        Label { id: label; Layout.preferredWidth: 84 }
        Slider { id: slider; objectName: label.text; stepSize: 1; Layout.fillWidth: true }
        Label { id: reading; text: slider.value; horizontalAlignment: Text.AlignRight; Layout.preferredWidth: 84 }
    }

    spacing: Theme.gap
    onHeartRateChanged: if (!rate.slider.pressed) rate.slider.value = heartRate

    Card {
        title: page.hasRate ? page.heartRate + " beats/min" : "No heart rate: the rhythm is set by its amplitude"
        Trace {
            objectName: "trace"; rate: page.heartRate
            amplitude: page.hasRate ? 0 : amplitude.slider.value / amplitude.slider.to
            running: page.visible && !freeze.checked
            Layout.fillWidth: true; Layout.fillHeight: true
        }
        RowLayout {
            Label { text: "Schematic, not an ECG: one shape for all rhythms; only the rate or the amplitude follows."; color: Theme.faint }
            Item { Layout.fillWidth: true }
            Switch { id: freeze; objectName: "freeze"; text: "Freeze" }
        }
    }
    RowLayout {
        spacing: Theme.gap; Layout.fillHeight: false
        Card {
            title: "Rhythm"; Layout.preferredWidth: 3
            RowLayout {
                Choice { names: ["adult", "child", "infant", "baby"]; value: page.age; onChosen: page.age = value }
                SpinBox {
                    objectName: "years"; to: 110; value: 30
                    textFromValue: years => years + (years === 1 ? " year" : " years")
                    onValueModified: page.age = Library.ageGroup(value)
                }
            }
            ComboBox {
                objectName: "rhythm"; textRole: "text"; valueRole: "id"
                model: Library.rhythms().map(id => ({ id: id, text: ECGLibraries.getECGConfig("", id).rhythmTypeName + " (" + id + ")" }))
                onActivated: page.chooseRhythm(currentValue); Layout.fillWidth: true
            }
            NamedSlider {
                id: rate; name: "Heart rate"; visible: page.hasRate; slider.to: 350
                reading: page.asked === page.heartRate ? page.heartRate : page.asked + " → " + page.heartRate
                Connections {
                    target: rate.slider
                    function onMoved() { page.asked = rate.slider.value; page.snap(); }
                    function onPressedChanged() { page.snap(); }
                }
            }
            NamedSlider {
                id: amplitude; name: "Amplitude"; visible: !page.hasRate
                slider.from: page.config.getParamValueAsInt("AmplitudeMin")
                slider.to: page.config.getParamValueAsInt("AmplitudeMax")
                slider.value: page.config.getParamValueAsInt("DefaultAmplitude")
            }
            RowLayout {
                Layout.preferredHeight: Theme.touch
                Label { text: page.hasRatios ? "Ratio" : "Rates"; Layout.preferredWidth: 84 }
                Choice { objectName: "rates"; options: page.choices(); visible: options.length > 0; value: page.heartRate; onChosen: page.asked = value }
                Label {
                    text: [page.config.heartrate_min + " to " + page.config.heartrate_max, "Fixed", "", "", "None"][page.config.rate_type]
                    visible: text !== ""; Layout.fillWidth: true
                }
            }
            RowLayout {
                Label { text: "Extra-\nsystoles"; Layout.preferredWidth: 84 }
                Choice {
                    objectName: "extraSystoles"
                    options: page.extraSystoles.map(type => ({ text: type === 0 ? "None" : "Type " + type, value: type,
                                                               enabled: page.config.isExtraSystoleAllowed(type) }))
                    value: page.extraSystole; onChosen: page.extraSystole = value
                }
            }
        }
        Card {
            title: "Blood pressure in mmHg, cyanosis"; Layout.preferredWidth: 2
            NamedSlider { name: "Systolic"; slider { to: page.config.systolic_max; value: 120 } reading: slider.value + " of " + slider.to }
            NamedSlider { name: "Diastolic"; slider { to: page.config.diastolic_max; value: 80 } reading: slider.value + " of " + slider.to }
            NamedSlider { id: saturation; name: "Saturation"; slider { to: 100; value: 86 } reading: slider.value + " %" }
            NamedSlider { id: threshold; name: "Threshold"; slider { to: 100; value: 85 } reading: slider.value + " %" }
            RowLayout {
                Switch { id: shown; objectName: "cyanosis"; text: "Shown"; checked: true }
                Rectangle {
                    objectName: "skin"
                    color: Qt.tint("#e8b89a", Qt.rgba(0.35, 0.4, 0.85, 0.15 * page.cyanosis))
                    radius: 6; Layout.fillWidth: true; Layout.preferredHeight: Theme.touch
                    Label { anchors.centerIn: parent; text: "Cyanosis level " + page.cyanosis.toFixed(1); color: "black" }
                }
            }
        }
    }
}
