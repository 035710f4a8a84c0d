import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15

// A slider between its name and its value.
RowLayout {
    property alias name: label.text
    property alias reading: reading.text
    property alias slider: slider

    Label { id: label; Layout.preferredWidth: 84 }
    Slider { id: slider; objectName: label.text; stepSize: 1; Layout.fillWidth: true }
    Label { id: reading; text: slider.value; horizontalAlignment: Text.AlignRight; Layout.preferredWidth: 84 }
}
