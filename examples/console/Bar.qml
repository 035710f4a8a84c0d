import QtQuick 2.15; import QtQuick.Controls 2.15

// A scroll bar that is seen as long as there is more than the list shows.
ScrollBar {
    Accessible.name: qsTr("Scroll bar")
    policy: size < 1 ? ScrollBar.AlwaysOn : ScrollBar.AlwaysOff
}
