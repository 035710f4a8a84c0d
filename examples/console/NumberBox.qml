import QtQuick 2.15; import QtQuick.Controls 2.15
import Console 1.0

// A number to type or to step; its text stays legible while it is selected, its signs while they are pressed.
SpinBox {
    id: box
    property alias hint: tip.text

    editable: true
    Component.onCompleted: contentItem.selectByMouse = true
    Binding { target: box.contentItem; property: "selectedTextColor"; value: Theme.selectedText }
    Binding { target: box.up.indicator; property: "color"; value: box.up.pressed ? Theme.pressed : Theme.button }
    Binding { target: box.down.indicator; property: "color"; value: box.down.pressed ? Theme.pressed : Theme.button }
    Accessible.description: hint
    Hint { id: tip }
}
