import QtQuick 2.15; import QtQuick.Controls 2.15; import QtQuick.Layouts 1.15
import HXCommon 8.0; import Console 1.0

GridLayout {
    id: page
    property var report: ({}) // the doctor's
    property var categories: []
    property var settings: []
    readonly property var levels: [{ name: qsTr("Debug"), type: 0 }, { name: qsTr("Info"), type: 4 }, { name: qsTr("Warning"), type: 1 }] // QtMsgType

    function look() {
        report = JSON.parse(System.report());
        categories = System.categories();
        settings = [["System/Environment", OXUrls.environment], ["System/Region", OXUrls.region], ["Window/width", System.width + " px"],
                    ["Window/height", System.height + " px"], ["Window/page", System.page], ["Window/dark", System.dark]]
            .map(([key, value]) => [key, System.setting(key), value === "" ? qsTr("none") : String(value)]);
    }
    function mark(row) { // red where something is missing that the application needs
        const needed = report.problems.some(problem => problem.text.startsWith("The " + row.directory + " directory "));
        return { text: !row.exists ? qsTr("missing") : row.writable ? qsTr("writable") : qsTr("read only"), color: needed ? Theme.bad : "" };
    }

    component Quarter: Card { Layout.preferredWidth: 1; Layout.preferredHeight: 1 }

    columns: 2; rowSpacing: Theme.gap; columnSpacing: Theme.gap
    onVisibleChanged: if (visible) look()

    Timer {
        running: page.visible && !pause.checked && log.contentY <= log.originY; repeat: true; triggeredOnStart: true; interval: 300
        onTriggered: log.lines = System.logTail()
    }
    Quarter {
        title: qsTr("Settings and versions")
        Rows {
            objectName: "facts"; name: qsTr("Settings and versions"); heads: [qsTr("Setting"), qsTr("Stored"), qsTr("In force")]; widths: [140, 60]
            model: page.settings.concat(Object.entries(page.report.identity || {}).map(([item, value]) => [item.replace(/_/g, " "), "", value === null ? "" : String(value)]))
        }
        RowLayout {
            PushButton { objectName: "store"; text: qsTr("Store window now"); hint: qsTr("Stores size, page and colours of the window in the settings file; closing does so, too"); onClicked: { System.storeWindow(); page.look(); } }
            PushButton { objectName: "guard"; text: qsTr("Try a second start"); hint: qsTr("Asks the guard whether another instance might run now"); onClicked: answer.text = System.mayRunAgain() ? qsTr("Allowed") : qsTr("Refused: this one runs") }
            Label { id: answer; objectName: "answer" }
        }
    }
    Quarter {
        title: qsTr("Directories")
        Rows {
            objectName: "directories"; name: qsTr("Directories"); heads: [qsTr("Directory"), qsTr("State"), qsTr("Path")]; widths: [140, 70]
            model: (page.report.directories || []).map(row => [row.directory, page.mark(row), row.path])
        }
    }
    Quarter {
        title: qsTr("Log categories")
        RowLayout {
            Layout.rightMargin: Theme.gap; spacing: 0
            Label { text: qsTr("Messages that are shown"); color: Theme.faint; font.pixelSize: Theme.small; Layout.fillWidth: true }
            Repeater {
                model: page.levels
                Label { text: modelData.name; font { bold: true; pixelSize: Theme.small } color: Theme.faint; horizontalAlignment: Text.AlignHCenter; Layout.preferredWidth: 60 }
            }
        }
        ListView {
            model: page.categories; clip: true; Layout.fillWidth: true; Layout.fillHeight: true
            ScrollBar.vertical: Bar { }
            delegate: RowLayout {
                readonly property string category: modelData.name
                objectName: category; width: ListView.view.width - Theme.gap; spacing: 0
                ColumnLayout {
                    spacing: 0
                    Label { text: modelData.name; font.pixelSize: Theme.small; wrapMode: Text.WrapAnywhere; Layout.fillWidth: true }
                    Label { text: modelData.description; visible: text !== ""; color: Theme.faint; font.pixelSize: Theme.small; wrapMode: Text.Wrap; Layout.fillWidth: true }
                }
                Repeater {
                    model: page.levels
                    CheckBox {
                        objectName: "level" + modelData.type; Layout.preferredWidth: 60
                        checked: System.isEnabled(parent.category, modelData.type)
                        onToggled: System.setEnabled(parent.category, modelData.type, checked)
                        Accessible.name: parent.category + ", " + modelData.name
                        Hint { text: qsTr("Messages of %1: %2").arg(parent.parent.category).arg(modelData.name) }
                    }
                }
            }
        }
    }
    Quarter {
        title: qsTr("Log file, the latest line first")
        RowLayout {
            TextField {
                id: search
                objectName: "search"; placeholderText: qsTr("Search"); placeholderTextColor: Theme.faint; selectedTextColor: Theme.selectedText; selectByMouse: true; Layout.fillWidth: true
                Accessible.name: qsTr("Text to search for in the log")
                Hint { text: qsTr("Shows the lines with this text only (Ctrl+F)") }
                Shortcut { sequence: StandardKey.Find; enabled: page.visible; onActivated: search.forceActiveFocus(Qt.ShortcutFocusReason) }
            }
            Toggle { id: pause; objectName: "pause"; text: qsTr("Pause"); hint: qsTr("Shows no new lines") }
        }
        Rows {
            id: log
            property var lines: []
            objectName: "log"; name: qsTr("Log file"); family: System.fixedFont()
            model: lines.filter(line => line.toLowerCase().includes(search.text.toLowerCase())).map(line => [line])
        }
    }
}
