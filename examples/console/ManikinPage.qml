import QtQuick 2.15; import QtQuick.Controls 2.15; import QtQuick.Layouts 1.15
import Console 1.0

RowLayout {
    id: page
    property string type: "Eyes"
    property var states: ({}) // the chosen values by enumeration

    function choose(key, state) {
        states = Object.assign({}, states, { [key]: state.value });
        SimulatedManikin.sendState(key, state.value);
    }

    spacing: Theme.gap

    Card {
        title: qsTr("Manikin")
        Layout.fillWidth: false; Layout.preferredWidth: 270
        RowLayout {
            Label { text: qsTr("Type") }
            NumberBox {
                objectName: "manikinType"; to: 255; value: SimulatedManikin.type; hint: qsTr("Manikin type by number, 0 to 255"); Accessible.name: hint
                onValueModified: SimulatedManikin.type = value; Layout.fillWidth: true
            }
        }
        Picker {
            objectName: "manikin"; model: Library.manikinTypes; hint: qsTr("Manikin type by name"); Accessible.name: hint
            currentIndex: model.findIndex(type => type.value === SimulatedManikin.type)
            displayText: Library.manikinName(SimulatedManikin.type)
            onActivated: SimulatedManikin.type = currentValue; Layout.fillWidth: true
        }
        Label { objectName: "product"; text: Library.product(SimulatedManikin.type) || qsTr("No product"); color: Theme.faint }
        ListView {
            id: types
            model: Library.vocabulary.filter((e, i, all) => all.findIndex(other => other.type === e.type) === i)
            objectName: "types"; clip: true; activeFocusOnTab: true; keyNavigationEnabled: true
            currentIndex: model.findIndex(e => e.type === page.type); highlightMoveDuration: 0
            onCurrentIndexChanged: if (model[currentIndex]) page.type = model[currentIndex].type
            Layout.fillWidth: true; Layout.fillHeight: true
            Accessible.role: Accessible.List; Accessible.name: qsTr("States of the manikin")
            ScrollBar.vertical: Bar { }
            delegate: ItemDelegate {
                objectName: modelData.type; text: modelData.typeWords; width: ListView.view.width; focusPolicy: Qt.NoFocus
                highlighted: ListView.isCurrentItem;
                onClicked: { types.currentIndex = index; types.forceActiveFocus(Qt.MouseFocusReason); }
                Hint { text: modelData.type }
                Rectangle { anchors.fill: parent; visible: parent.highlighted && types.activeFocus; color: "transparent"; border { width: 2; color: Theme.focus } }
            }
        }
    }
    Card {
        title: types.currentItem ? types.currentItem.text : ""
        Label { text: qsTr("A chosen state is sent to the manikin: see the page Link."); color: Theme.faint }
        ListView {
            model: Library.vocabulary.filter(enumeration => enumeration.type === page.type)
            clip: true; spacing: Theme.gap; Layout.fillWidth: true; Layout.fillHeight: true
            ScrollBar.vertical: Bar { }
            delegate: ColumnLayout {
                readonly property string key: modelData.type + "." + modelData.name
                readonly property var value: page.states[key]
                width: ListView.view.width - Theme.gap
                Label { text: modelData.words + (parent.value === undefined ? "" : " = " + parent.value); color: Theme.faint }
                Choice {
                    options: modelData.states.map(state => Object.assign({ hint: state.name + " = " + state.value }, state)); value: parent.value
                    onChosen: page.choose(parent.key, modelData.states.find(state => state.value === value))
                }
            }
        }
    }
}
