import QtQuick 2.15; import QtQuick.Controls 2.15

Switch {
    property alias hint: tip.text

    Accessible.name: text; Accessible.description: hint
    Hint { id: tip }
}
