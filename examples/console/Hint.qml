import QtQuick 2.15; import QtQuick.Controls 2.15

// Inside a control: tells what it is for while the pointer rests on it.
Item {
    property string text

    anchors.fill: parent
    ToolTip.text: text; ToolTip.visible: parent.hovered && text !== ""; ToolTip.delay: 600
}
