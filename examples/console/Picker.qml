import QtQuick 2.15; import QtQuick.Controls 2.15
import Console 1.0

// A box to choose from; its text stays legible while it is open.
ComboBox {
    id: picker
    property alias hint: tip.text

    textRole: "text"; valueRole: "value"
    background: Rectangle {
        implicitHeight: Theme.touch
        color: picker.down ? Theme.pressed : Theme.button
        border { color: Theme.focus; width: picker.visualFocus ? 2 : 0 }
    }
    Accessible.description: hint
    Component.onCompleted: {
        contentItem.Accessible.ignored = true; // it only shows the choice
        popup.contentItem.ScrollBar.vertical = bar.createObject(popup.contentItem);
    }
    Component { id: bar; Bar { } }
    Hint { id: tip }
}
