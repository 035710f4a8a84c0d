import QtQuick 2.15; import QtQuick.Controls 2.15; import QtQuick.Layouts 1.15
import Console 1.0

// Rows of texts under heads, which scroll by touch and by the arrow keys. A cell is a text or a map {text, color};
// the last one takes the space that is left.
ListView {
    id: view
    property string name // for assistive technology
    property var heads: []
    property var widths: [] // of the other cells
    property string family: Qt.application.font.family

    component Cells: RowLayout {
        id: cells
        property var model
        property bool head: false

        width: view.width - Theme.gap; spacing: Theme.gap
        Repeater {
            model: cells.model
            Label {
                text: modelData.text === undefined ? modelData : modelData.text
                textFormat: modelData.rich ? Text.StyledText : Text.PlainText
                color: modelData.color || (cells.head || index < view.widths.length && index === 0 ? Theme.faint : Theme.text)
                font { family: cells.head ? Qt.application.font.family : view.family; pixelSize: Theme.small; bold: cells.head }
                wrapMode: Text.Wrap
                Layout.alignment: Qt.AlignTop; Layout.preferredWidth: view.widths[index] || 0; Layout.fillWidth: index === view.widths.length
            }
        }
    }

    Layout.fillWidth: true; Layout.fillHeight: true
    clip: true; activeFocusOnTab: true; boundsBehavior: Flickable.StopAtBounds
    Accessible.role: Accessible.List; Accessible.name: name
    Keys.onUpPressed: bar.decrease()
    Keys.onDownPressed: bar.increase()
    ScrollBar.vertical: Bar { id: bar; stepSize: 0.1 }
    headerPositioning: ListView.OverlayHeader
    header: Rectangle {
        width: view.width; height: heads.height; z: 2; color: Theme.card
        Cells { id: heads; model: view.heads; head: true }
    }
    delegate: Cells { model: modelData }

    Rectangle { anchors.fill: parent; z: 3; visible: view.activeFocus; color: "transparent"; border { width: 2; color: Theme.focus } }
}
