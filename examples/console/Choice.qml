import QtQuick 2.15; import QtQuick.Controls 2.15; import QtQuick.Layouts 1.15

// Buttons for the values of something: options are maps {text, value}, and if need be {name} for scripts,
// {hint}, {enabled}.
Flow {
    id: choice
    property var names: [] // options whose text is the value
    property var options: names.map(name => ({ text: name, value: name }))
    property var value
    signal chosen(var value)

    Layout.fillWidth: true
    spacing: 6
    Keys.onLeftPressed: focusNext(false)
    Keys.onRightPressed: focusNext(true)

    function focusNext(forward) { Window.activeFocusItem.nextItemInFocusChain(forward).forceActiveFocus(Qt.TabFocusReason); }

    Repeater {
        model: choice.options
        PushButton {
            objectName: modelData.name || modelData.text; text: modelData.text; hint: modelData.hint || ""
            highlighted: choice.value === modelData.value
            enabled: modelData.enabled !== false; opacity: enabled ? 1 : 0.4
            leftPadding: 12; rightPadding: 12
            implicitWidth: Math.max(52, implicitContentWidth + 24)
            Accessible.checkable: true; Accessible.checked: highlighted
            onClicked: choice.chosen(modelData.value)
        }
    }
}
