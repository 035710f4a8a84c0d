import QtQuick 2.15; import QtQuick.Controls 2.15; import QtQuick.Layouts 1.15
import Console 1.0

GridLayout {
    id: page
    property var report: ({}) // the doctor's
    property var categories: []
    property var settings: []

    function look() {
        report = JSON.parse(System.report());
        categories = System.categories();
        settings = ["System/Environment", "System/Region", "Window/width", "Window/height", "Window/page", "Window/dark"]
            .map(key => [key, System.setting(key)]);
    }

    component Quarter: Card { Layout.preferredWidth: 1; Layout.preferredHeight: 1 }

    columns: 2; rowSpacing: Theme.gap; columnSpacing: Theme.gap
    onVisibleChanged: if (visible) look()

    Timer {
        running: page.visible && log.atYBeginning; repeat: true; triggeredOnStart: true; interval: 300
        onTriggered: log.model = System.logTail().split("\n").reverse().map(line => [line])
    }
    Quarter {
        title: "Settings and versions"
        Rows { objectName: "facts"; model: page.settings.concat((page.report.Identity || []).map(row => [row.item, row.value])); widths: [150] }
        RowLayout {
            Button { objectName: "store"; text: "Store window"; onClicked: { System.storeWindow(); page.look(); } }
            Button { objectName: "guard"; text: "Run twice?"; onClicked: answer.text = System.mayRunAgain() ? "Allowed" : "Refused: this one runs" }
            Label { id: answer; objectName: "answer" }
        }
    }
    Quarter {
        title: "Directories"
        Rows { objectName: "directories"; model: (page.report.Directories || []).map(row => [row.directory, row.path]); widths: [150] }
    }
    Quarter {
        title: "Logging: debug, info, warning"
        ListView {
            model: page.categories; clip: true; Layout.fillWidth: true; Layout.fillHeight: true
            ScrollBar.vertical: ScrollBar { }
            delegate: RowLayout {
                readonly property string category: modelData
                objectName: category; width: ListView.view.width - Theme.gap; spacing: 0
                Label { text: parent.category; font.pixelSize: 13; elide: Text.ElideMiddle; Layout.fillWidth: true }
                Repeater {
                    model: [0, 4, 1] // QtMsgType
                    CheckBox {
                        objectName: "level" + modelData
                        checked: System.isEnabled(parent.category, modelData)
                        onToggled: System.setEnabled(parent.category, modelData, checked)
                    }
                }
            }
        }
    }
    Quarter {
        title: "Log file, the latest line first"
        Rows { id: log; objectName: "log"; family: Theme.fixedFont }
    }
}
