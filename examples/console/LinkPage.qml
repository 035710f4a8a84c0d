import QtQuick 2.15; import QtQuick.Controls 2.15; import QtQuick.Layouts 1.15
import HXCommon 8.0; import Console 1.0

ColumnLayout {
    id: page
    property int heartRate
    property var link: SimulatedManikin.state()

    spacing: Theme.gap

    PausingTimer {
        id: clock
        onTimeout: SimulatedManikin.send(page.heartRate)
        Component.onCompleted: start(System.isUnderLoad() ? 0 : 500)
    }
    Timer { running: page.visible; repeat: true; triggeredOnStart: true; interval: 200; onTriggered: page.link = SimulatedManikin.state() }
    onLinkChanged: if (frames.atYBeginning) frames.model = link.frames // and stands still while it is read
    RowLayout {
        spacing: Theme.gap; Layout.fillHeight: false
        Card {
            title: "Line"; Layout.fillWidth: false
            RowLayout {
                spacing: Theme.gap
                Dial {
                    objectName: "noise"; to: 10; stepSize: 0.5
                    value: SimulatedManikin.noise; onMoved: SimulatedManikin.noise = value
                    Layout.preferredWidth: 124; Layout.preferredHeight: 124
                    Label { anchors.centerIn: parent; text: SimulatedManikin.noise.toFixed(1) + " %" }
                }
                ColumnLayout {
                    Label { text: "Noise: bytes with\na flipped bit"; color: Theme.faint }
                    Button { objectName: "send"; text: "Send one"; onClicked: SimulatedManikin.send(page.heartRate); Layout.fillWidth: true }
                    Switch { objectName: "running"; text: "Keep sending"; checked: true; onToggled: checked ? clock.resume() : clock.pause() }
                }
            }
        }
        Card {
            title: "Both ends of a local socket pair"
            GridLayout {
                columns: 5; columnSpacing: Theme.gap
                Repeater {
                    model: ["", "Sent", "Received", "CRC errors", "Bytes discarded"].concat(page.link.counters)
                    Label {
                        objectName: "counter" + index; text: modelData
                        color: index < 5 ? Theme.faint : Theme.text
                        font.pixelSize: index > 5 && index % 5 > 0 ? 20 : 15
                        horizontalAlignment: index % 5 > 0 ? Text.AlignRight : Text.AlignLeft
                        Layout.fillWidth: true
                    }
                }
            }
            Item { Layout.fillHeight: true }
            Label { objectName: "report"; text: page.link.report }
        }
    }
    Card {
        title: "Last frames at the console's end of the line, the latest first"
        Rows { id: frames; objectName: "frames"; widths: [80, 90]; family: Theme.fixedFont }
    }
}
