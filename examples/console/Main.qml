import QtQuick 2.15; import QtQuick.Controls 2.15; import QtQuick.Layouts 1.15
import Console 1.0

ApplicationWindow {
    id: window
    readonly property var pages: ["Patient", "Manikin", "Link", "Services", "System", "Help"] // names of the pictures, too
    readonly property var titles: [qsTr("Patient"), qsTr("Manikin"), qsTr("Link"), qsTr("Services"), qsTr("System"), qsTr("Help")]
    property int page: System.page

    title: qsTr("Olvex instructor console")
    visible: true
    minimumWidth: System.smallestSize().width; minimumHeight: System.smallestSize().height
    width: System.width; height: System.height
    onWidthChanged: System.width = Math.max(width, minimumWidth)
    onHeightChanged: System.height = Math.max(height, minimumHeight)
    onPageChanged: System.page = page
    Component.onCompleted: if (!pages[System.page]) System.page = 0
    onActiveFocusItemChanged: { // scrolls to it
        for (let view = activeFocusItem; view; view = view.parent) {
            if (!(view instanceof ListView) || view === activeFocusItem)
                continue;
            const y = activeFocusItem.mapToItem(view.contentItem, 0, 0).y;
            view.contentY = Math.max(Math.min(view.contentY, y), y + activeFocusItem.height - view.height);
        }
    }
    background: Rectangle { color: Theme.window }
    font.pixelSize: 15
    palette {
        window: Theme.card; windowText: Theme.text; base: Theme.window; text: Theme.text
        button: Theme.button; buttonText: Theme.text; brightText: Theme.accentText
        highlight: Theme.focus; highlightedText: Theme.text // of lists
        light: Theme.button; midlight: Theme.track; mid: Theme.faint; dark: Theme.accent
        toolTipBase: Theme.text; toolTipText: Theme.window
    }

    Binding { target: Theme; property: "dark"; value: System.dark }
    Shortcut { sequence: "Ctrl+D"; onActivated: System.dark = !System.dark }
    Shortcut { sequence: StandardKey.HelpContents; onActivated: System.page = window.pages.indexOf("Help") }
    Shortcut { sequence: "Ctrl+Q"; onActivated: window.close() }

    RowLayout {
        anchors { fill: parent; margins: Theme.gap }
        spacing: Theme.gap

        ColumnLayout {
            Layout.preferredWidth: 132; Layout.fillWidth: false
            Label { text: "Olvex"; font { bold: true; pixelSize: 22 } }
            Label { text: qsTr("Instructor console"); color: Theme.faint; font.pixelSize: Theme.small; Layout.bottomMargin: Theme.gap }
            Repeater {
                model: window.pages
                PushButton {
                    objectName: modelData; text: window.titles[index]; hint: "Ctrl+" + (index + 1)
                    highlighted: System.page === index; onClicked: System.page = index
                    Layout.fillWidth: true; Layout.preferredHeight: 48
                    Shortcut { sequence: "Ctrl+" + (index + 1); onActivated: System.page = index }
                }
            }
            Item { Layout.fillHeight: true }
            Toggle { objectName: "dark"; text: qsTr("Dark"); hint: qsTr("Dark or light colours (Ctrl+D)"); checked: System.dark; onToggled: System.dark = checked }
        }
        StackLayout {
            currentIndex: System.page
            PatientPage { id: patient }
            ManikinPage { }
            LinkPage { heartRate: patient.heartRate }
            ServicesPage { }
            SystemPage { }
            HelpPage { }
        }
    }
}
