import QtQuick 2.15
import Console 1.0

Card {
    title: qsTr("Keys")
    Rows {
        name: qsTr("Keys"); heads: [qsTr("Key"), qsTr("What it does")]; widths: [190]
        model: [[qsTr("Ctrl+1 to Ctrl+6"), qsTr("Shows a page")], ["F1", qsTr("Shows this page")],
                ["Ctrl+D", qsTr("Changes between dark and light colours")],
                ["Ctrl+F", qsTr("Searches in the log, on the page System")], ["Ctrl+Q", qsTr("Closes the console")],
                [qsTr("Tab, Shift+Tab"), qsTr("Goes to the next or the previous control")],
                [qsTr("Space"), qsTr("Presses a button, turns a switch")],
                [qsTr("Arrow keys"), qsTr("Move a slider, the dial, the choice in a list or a row of buttons; scroll a list")],
                [qsTr("Home, End"), qsTr("Move a slider or the dial to its least or greatest value")],
                [qsTr("Pointer at rest"), qsTr("A note says what the control below it is for")]]
    }
}
