import QtQuick 2.15; import QtQuick.Controls 2.15; import QtQuick.Layouts 1.15
import Console 1.0

// Controls under a title. In a layout it takes its share of the space that is left.
Rectangle {
    property alias title: heading.text
    default property alias content: column.data

    implicitWidth: column.implicitWidth + 2 * Theme.gap
    implicitHeight: column.implicitHeight + 2 * Theme.gap
    Layout.fillWidth: true; Layout.fillHeight: true
    radius: 6; color: Theme.card
    Accessible.role: Accessible.Grouping; Accessible.name: title

    ColumnLayout {
        id: column
        anchors { fill: parent; margins: Theme.gap }
        spacing: 6
        Label { id: heading; font { bold: true; pixelSize: 16 } elide: Text.ElideRight; Layout.fillWidth: true }
    }
}
