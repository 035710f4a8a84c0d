import QtQuick 2.15; import QtQuick.Controls 2.15; import QtQuick.Layouts 1.15
import Console 1.0

ColumnLayout {
    spacing: Theme.gap

    Card {
        title: qsTr("Keys"); Layout.preferredHeight: 5
        Rows {
            name: qsTr("Keys"); heads: [qsTr("Key"), qsTr("What it does")]; widths: [190]
            model: [[qsTr("Ctrl+1 to Ctrl+6"), qsTr("Shows a page")], ["F1", qsTr("Shows this page")],
                    ["Ctrl+D", qsTr("Changes between dark and light colours")],
                    ["Ctrl+F", qsTr("Searches in the log, on the page System")], ["Ctrl+Q", qsTr("Closes the console")],
                    [qsTr("Tab, Shift+Tab"), qsTr("Goes to the next or the previous control")],
                    [qsTr("Space"), qsTr("Presses a button, turns a switch")],
                    [qsTr("Arrow keys"), qsTr("Move a slider, the dial, the choice in a list or a row of buttons; scroll a list")],
                    [qsTr("Home, End"), qsTr("Move a slider or the dial to its least or greatest value")]]
        }
    }
    Card {
        title: qsTr("Pages"); Layout.preferredHeight: 4
        Rows {
            name: qsTr("Pages"); heads: [qsTr("Page"), qsTr("What it shows")]; widths: [190]
            model: [[qsTr("Patient"), qsTr("Age group, rhythm, heart rate, extrasystoles, pressures and cyanosis of a patient, and what the rules of the rhythm make of what is asked for")],
                    [qsTr("Manikin"), qsTr("Type and product of a simulated manikin, and the states that can be sent to it")],
                    [qsTr("Link"), qsTr("The frames to the manikin and back, on a line with noise")],
                    [qsTr("Services"), qsTr("Which online services can be reached, and why not")],
                    [qsTr("System"), qsTr("Settings, directories, log categories and the log")]]
        }
    }
    Label { text: qsTr("Where the pointer rests on a control, a note says what it is for."); color: Theme.faint }
}
