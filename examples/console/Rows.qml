import QtQuick 2.15; import QtQuick.Controls 2.15; import QtQuick.Layouts 1.15
import Console 1.0

// Rows of texts, which scroll by touch and by the arrow keys: the last cell takes the space that is left.
ListView {
    id: view
    property var widths: [] // of the other cells
    property string family: Qt.application.font.family

    Layout.fillWidth: true; Layout.fillHeight: true
    clip: true; activeFocusOnTab: true; boundsBehavior: Flickable.StopAtBounds
    Keys.onUpPressed: bar.decrease()
    Keys.onDownPressed: bar.increase()
    ScrollBar.vertical: ScrollBar { id: bar; stepSize: 0.1 }

    delegate: RowLayout {
        width: view.width - Theme.gap; spacing: Theme.gap
        Repeater {
            model: modelData
            Label {
                text: modelData
                color: index < view.widths.length && index === 0 ? Theme.faint : Theme.text
                font { family: view.family; pixelSize: 13 }
                wrapMode: Text.Wrap
                Layout.alignment: Qt.AlignTop; Layout.preferredWidth: view.widths[index] || 0; Layout.fillWidth: index === view.widths.length
            }
        }
    }

    Rectangle { anchors.fill: parent; visible: view.activeFocus; color: "transparent"; border { width: 2; color: Theme.focus } }
}
