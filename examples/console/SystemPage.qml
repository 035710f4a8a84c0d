import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import Console 1.0

GridLayout {
    id: page

    property var categories: []
    property var facts: []
    property var log: []

    function look() {
        categories = System.categories();
        facts = System.settings().concat(System.table("Identity"));
    }

    columns: 2
    rowSpacing: Theme.gap
    columnSpacing: Theme.gap
    onVisibleChanged: if (visible) look()

    Timer {
        running: page.visible
        repeat: true
        triggeredOnStart: true
        interval: 300
        onTriggered: page.log = System.logTail().split("\n").reverse().map(line => [line])
    }
    Card {
        title: "Settings and versions"
        Layout.preferredWidth: 2; Layout.preferredHeight: 1
        Rows { objectName: "facts"; model: page.facts; widths: [160] }
        RowLayout {
            Button { objectName: "store"; text: "Store window"; onClicked: { System.storeWindow(); page.look(); } }
            Button { objectName: "guard"; text: "Run twice?"; onClicked: answer.text = System.mayRunAgain() ? "Allowed" : "Refused: this one runs" }
            Label { id: answer; objectName: "answer" }
        }
    }
    Card {
        title: "Directories"
        Layout.preferredWidth: 3; Layout.preferredHeight: 1
        Rows { objectName: "directories"; model: System.table("Directories").map(row => [row[0], row[4]]); widths: [160] }
    }
    Card {
        title: "Logging: debug, info, warning"
        Layout.preferredWidth: 2; Layout.preferredHeight: 1
        ListView {
            model: page.categories
            clip: true
            Layout.fillWidth: true; Layout.fillHeight: true
            ScrollBar.vertical: ScrollBar { }
            delegate: RowLayout {
                readonly property string category: modelData
                objectName: category
                width: ListView.view.width - Theme.gap
                spacing: 0
                Label { text: parent.category; elide: Text.ElideMiddle; Layout.fillWidth: true }
                Repeater {
                    model: [0, 4, 1] // QtMsgType
                    CheckBox {
                        objectName: "level" + modelData
                        checked: System.isEnabled(parent.category, modelData)
                        onToggled: System.setEnabled(parent.category, modelData, checked)
                    }
                }
                Button { objectName: "try"; text: "Try"; implicitWidth: 52; onClicked: System.tryOut(parent.category) }
            }
        }
    }
    Card {
        title: "Log file, the latest line first"
        Layout.preferredWidth: 3; Layout.preferredHeight: 1
        Rows { objectName: "log"; model: page.log; family: Theme.fixedFont }
    }
}
