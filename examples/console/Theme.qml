pragma Singleton
import QtQuick 2.15

// All colours and measures.
QtObject {
    property bool dark: true
    readonly property color window: dark ? "#10161d" : "#e9edf2"
    readonly property color card: dark ? "#1a232d" : "#ffffff"
    readonly property color text: dark ? "#e8eef4" : "#17212b"
    readonly property color faint: dark ? "#a9b8c6" : "#4a5865"
    readonly property color button: dark ? "#2b3845" : "#dce3ea"
    readonly property color pressed: dark ? "#3b4a59" : "#c3ced8"
    readonly property color track: dark ? "#8795a5" : "#667482"
    readonly property color accent: dark ? "#4a90d9" : "#155fae"
    readonly property color accentText: dark ? "#0b1118" : "#ffffff"
    readonly property color focus: dark ? "#ffffff" : "#000000" // and the ground of selected text
    readonly property color selectedText: window
    readonly property color good: dark ? "#6bd48a" : "#17703a"
    readonly property color bad: dark ? "#ff8f86" : "#b3261e"
    readonly property int gap: 12
    readonly property int touch: 40
    readonly property int small: 13
}
