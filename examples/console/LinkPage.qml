import QtQuick 2.15; import QtQuick.Controls 2.15; import QtQuick.Layouts 1.15
import HXCommon 8.0; import Console 1.0

ColumnLayout {
    id: page
    property int heartRate
    property var link: SimulatedManikin.state()

    // The bytes of a frame; those that the noise changed stand out.
    function bytes(frame) {
        const marked = text => "<u><b><font color=\"" + Theme.bad + "\">" + text + "</font></b></u>";
        return frame.hex.split(" ").map((text, i) => frame.changed.includes(i) ? marked(text) : text).join(" ");
    }

    spacing: Theme.gap

    PausingTimer {
        id: clock
        onTimeout: SimulatedManikin.sendHeartRate(page.heartRate)
        Component.onCompleted: start(System.isUnderLoad() ? 0 : 500)
    }
    Timer { running: page.visible; repeat: true; triggeredOnStart: true; interval: 200; onTriggered: page.link = SimulatedManikin.state() }
    onLinkChanged: {
        if (frames.verticalVelocity === 0 && frames.contentY <= frames.originY) // and stands still while it is read
            frames.model = link.frames.map(frame => [frame.time, frame.direction, { text: frame.intact ? frame.words : qsTr("CRC error"), color: frame.intact ? "" : Theme.bad },
                                                     { text: bytes(frame), rich: true }]);
    }
    RowLayout {
        spacing: Theme.gap; Layout.fillHeight: false
        Card {
            title: qsTr("Line"); Layout.fillWidth: false
            RowLayout {
                spacing: Theme.gap
                Dial {
                    objectName: "noise"; to: 10; stepSize: 0.5
                    value: SimulatedManikin.noise; onMoved: SimulatedManikin.noise = value
                    Layout.preferredWidth: 124; Layout.preferredHeight: 124
                    Accessible.name: qsTr("Noise in percent of the bytes")
                    Label { anchors.centerIn: parent; text: SimulatedManikin.noise.toFixed(1) + " %" }
                    Hint { text: qsTr("Noise: in so many percent of the bytes, both ways, a bit is flipped") }
                }
                ColumnLayout {
                    Label { text: qsTr("Noise: bytes with\na flipped bit"); color: Theme.faint }
                    PushButton { objectName: "send"; text: qsTr("Send one"); hint: qsTr("Sends the heart rate once"); onClicked: SimulatedManikin.sendHeartRate(page.heartRate); Layout.fillWidth: true }
                    Toggle {
                        objectName: "running"; text: qsTr("Keep sending"); hint: qsTr("Sends the heart rate twice a second")
                        checked: true; onToggled: checked ? clock.resume() : clock.pause()
                    }
                }
            }
        }
        Card {
            title: qsTr("Both ends of the link")
            GridLayout {
                columns: 6; columnSpacing: Theme.gap
                Repeater {
                    model: ["", qsTr("Sent"), qsTr("Received"), qsTr("CRC errors"), qsTr("Bytes discarded"), qsTr("Loss")].concat(page.link.counters)
                    Label {
                        objectName: "counter" + index; text: index > 6 && index % 6 === 5 ? modelData.toFixed(1) + " %" : modelData
                        color: index < 6 ? Theme.faint : Theme.text
                        font.pixelSize: index > 6 && index % 6 > 0 ? 20 : 15
                        horizontalAlignment: index % 6 > 0 ? Text.AlignRight : Text.AlignLeft
                        Layout.fillWidth: true
                    }
                }
            }
            Item { Layout.fillHeight: true }
            RowLayout {
                Label { objectName: "report"; text: page.link.report; wrapMode: Text.Wrap; Layout.fillWidth: true }
                PushButton { objectName: "reset"; text: qsTr("Reset"); hint: qsTr("Counts from 0 again and empties the list of frames"); onClicked: { SimulatedManikin.reset(); page.link = SimulatedManikin.state(); } }
                PushButton { objectName: "copy"; text: qsTr("Copy as hex"); hint: qsTr("Copies the frames of the list to the clipboard, one on a line, the oldest first"); onClicked: SimulatedManikin.copyFrames() }
            }
        }
    }
    Card {
        title: qsTr("Last frames at the console's end of the line, the latest first")
        Rows {
            id: frames
            objectName: "frames"; name: qsTr("Last frames"); family: System.fixedFont()
            heads: [qsTr("Time"), qsTr("Direction"), qsTr("Message"), qsTr("Bytes (underlined: changed by noise)")]; widths: [100, 76, 300]
        }
    }
}
