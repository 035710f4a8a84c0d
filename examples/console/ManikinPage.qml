import QtQuick 2.15; import QtQuick.Controls 2.15; import QtQuick.Layouts 1.15
import Console 1.0

RowLayout {
    id: page
    property string type: "Eyes"
    property var states: ({}) // the chosen values by enumeration

    spacing: Theme.gap

    Card {
        title: "Manikin"
        Layout.fillWidth: false; Layout.preferredWidth: 270
        SpinBox {
            objectName: "manikinType"; to: 255; value: SimulatedManikin.type
            textFromValue: type => "type " + type
            onValueModified: SimulatedManikin.type = value; Layout.fillWidth: true
        }
        Label { objectName: "manikin"; text: Library.manikinName(SimulatedManikin.type); font.bold: true }
        Label { objectName: "product"; text: Library.product(SimulatedManikin.type) || "No product"; color: Theme.faint }
        ListView {
            model: Library.vocabulary.map(e => e.type).filter((type, i, all) => all.indexOf(type) === i)
            objectName: "types"; clip: true; Layout.fillWidth: true; Layout.fillHeight: true
            ScrollBar.vertical: ScrollBar { }
            delegate: ItemDelegate {
                objectName: modelData; text: modelData; width: ListView.view.width
                highlighted: page.type === modelData; onClicked: page.type = modelData; focusPolicy: Qt.StrongFocus
                Rectangle { anchors.fill: parent; visible: parent.visualFocus; color: "transparent"; border { width: 2; color: Theme.focus } }
            }
        }
    }
    Card {
        title: page.type
        ListView {
            model: Library.vocabulary.filter(enumeration => enumeration.type === page.type)
            clip: true; spacing: Theme.gap; Layout.fillWidth: true; Layout.fillHeight: true
            ScrollBar.vertical: ScrollBar { }
            delegate: ColumnLayout {
                readonly property string key: modelData.type + "." + modelData.name
                readonly property var value: page.states[key]
                width: ListView.view.width - Theme.gap
                Label { text: modelData.name + (parent.value === undefined ? "" : " = " + parent.value); color: Theme.faint }
                Choice {
                    options: modelData.states; value: parent.value
                    onChosen: page.states = Object.assign({}, page.states, { [parent.key]: value })
                }
            }
        }
    }
}
