import QtQuick 2.15; import QtQuick.Controls 2.15
import Console 1.0

// A button whose text stays legible while it is pressed.
Button {
    id: button
    property alias hint: tip.text

    Accessible.name: text; Accessible.description: hint
    background: Rectangle {
        implicitWidth: 100; implicitHeight: Theme.touch
        color: button.highlighted ? Theme.accent : button.down ? Theme.pressed : Theme.button
        border { color: Theme.focus; width: button.visualFocus ? 2 : 0 }
    }
    Hint { id: tip }
}
