import QtQuick 2.15; import QtQuick.Controls 2.15; import QtQuick.Layouts 1.15

// Buttons for the values of something: options are maps {text, value}, and {enabled} if it may be false.
Flow {
    id: choice
    property var names: [] // options whose text is the value
    property var options: names.map(name => ({ text: name, value: name }))
    property var value
    signal chosen(var value)

    Layout.fillWidth: true
    spacing: 6

    Repeater {
        model: choice.options
        Button {
            objectName: modelData.text; text: modelData.text
            highlighted: choice.value === modelData.value
            enabled: modelData.enabled !== false; opacity: enabled ? 1 : 0.4
            leftPadding: 12; rightPadding: 12
            implicitWidth: Math.max(52, implicitContentWidth + 24)
            onClicked: choice.chosen(modelData.value)
        }
    }
}
