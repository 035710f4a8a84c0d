import QtQuick 2.15; import QtQuick.Controls 2.15; import QtQuick.Layouts 1.15
import Console 1.0

ApplicationWindow {
    id: window
    readonly property var pages: ["Patient", "Manikin", "Link", "Services", "System"]
    property int page: System.page

    title: "Olvex instructor console"
    visible: true
    minimumWidth: 1024; minimumHeight: 600
    width: System.width; height: System.height
    onWidthChanged: System.width = width; onHeightChanged: System.height = height
    onPageChanged: System.page = page
    onActiveFocusItemChanged: { // scrolls to it
        for (let view = activeFocusItem; view; view = view.parent) {
            if (!(view instanceof ListView))
                continue;
            const y = activeFocusItem.mapToItem(view.contentItem, 0, 0).y;
            view.contentY = Math.max(Math.min(view.contentY, y), y + activeFocusItem.height - view.height);
        }
    }
    background: Rectangle { color: Theme.window }
    font.pixelSize: 15
    palette {
        window: Theme.card; windowText: Theme.text; base: Theme.window; text: Theme.text
        button: Theme.button; buttonText: Theme.text; brightText: Theme.accentText; highlightedText: Theme.text
        light: Theme.button; midlight: Theme.track; mid: Theme.faint; dark: Theme.accent; highlight: Theme.focus
    }

    Binding { target: Theme; property: "dark"; value: System.dark }
    Shortcut { sequence: "Ctrl+D"; onActivated: System.dark = !System.dark }
    Shortcut { sequence: StandardKey.Quit; onActivated: window.close() }

    RowLayout {
        anchors { fill: parent; margins: Theme.gap }
        spacing: Theme.gap

        ColumnLayout {
            Layout.preferredWidth: 132; Layout.fillWidth: false
            Label { text: "Olvex"; font { bold: true; pixelSize: 22 } }
            Label { text: "Instructor console"; color: Theme.faint; font.pixelSize: 13; Layout.bottomMargin: Theme.gap }
            Repeater {
                model: window.pages
                Button {
                    objectName: modelData; text: modelData
                    highlighted: System.page === index; onClicked: System.page = index
                    Layout.fillWidth: true; Layout.preferredHeight: 48
                    Shortcut { sequence: "Ctrl+" + (index + 1); onActivated: System.page = index }
                }
            }
            Item { Layout.fillHeight: true }
            Label { text: "Ctrl+1 to Ctrl+5"; color: Theme.faint; font.pixelSize: 13 }
            Switch { objectName: "dark"; text: "Dark"; checked: System.dark; onToggled: System.dark = checked }
        }
        StackLayout {
            currentIndex: System.page
            PatientPage { id: patient }
            ManikinPage { }
            LinkPage { heartRate: patient.heartRate }
            ServicesPage { }
            SystemPage { }
        }
    }
}
