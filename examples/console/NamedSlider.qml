import QtQuick 2.15; import QtQuick.Controls 2.15; import QtQuick.Layouts 1.15
import Console 1.0

// A slider for a number that is asked for; the rules may make another one of it. The handle returns to that one
// when it is let go, and what was asked for is kept.
RowLayout {
    id: named
    property string name
    property string unit
    property alias from: slider.from
    property alias to: slider.to
    property int asked
    property int got: asked
    property int least: from // and most: the part that the rules allow
    property int most: to
    property alias hint: tip.text
    readonly property alias pressed: slider.pressed

    function settle() { if (!slider.pressed) slider.value = got; }
    function at(value) { // its place on the track
        return slider.leftPadding + slider.handle.width / 2 + (value - from) / (to - from) * (slider.availableWidth - slider.handle.width);
    }

    onGotChanged: settle()
    Component.onCompleted: settle()
    Label { text: named.name; Layout.preferredWidth: 84 }
    Slider {
        id: slider
        objectName: named.name; stepSize: 1; Layout.fillWidth: true
        Accessible.name: named.name + ", " + named.unit; Accessible.description: named.hint
        onMoved: { named.asked = value; named.settle(); }
        onPressedChanged: named.settle()
        Rectangle {
            objectName: "allowed"
            x: named.at(named.least) - 2; width: named.at(named.most) - x + 2; y: parent.height - height; height: 4; radius: 2
            visible: named.most > 0 && (named.least > named.from || named.most < named.to); color: Theme.good
        }
        Hint { id: tip }
    }
    Label {
        objectName: named.name + " reading"
        text: named.got + " " + named.unit + (named.asked === named.got ? "" : "\n" + qsTr("(asked: %1)").arg(named.asked))
        horizontalAlignment: Text.AlignRight; Layout.minimumWidth: 92; Layout.preferredHeight: Theme.touch; verticalAlignment: Text.AlignVCenter
    }
}
