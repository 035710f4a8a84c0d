import QtQuick 2.15; import QtQuick.Controls 2.15; import QtQuick.Layouts 1.15
import HXCommon 8.0; import Console 1.0

ColumnLayout {
    id: page
    signal check
    readonly property var looks: [ // by ConnectivityChecker.ConnectivityStatus
        { text: "Not checked yet", color: Theme.faint }, { text: "Connecting", color: Theme.text },
        { text: "Failed", color: Theme.bad }, { text: "Success", color: Theme.good }]

    spacing: Theme.gap

    Connections { target: Services; function onChanged() { page.check(); } }
    Card {
        title: "Deployment"; Layout.fillHeight: false
        GridLayout {
            columns: 2; columnSpacing: Theme.gap
            Label { text: "Environment" }
            Choice { names: Services.environments; value: OXUrls.environment; onChosen: OXUrls.environment = value }
            Label { text: "Region" }
            Choice { names: Services.regions; value: OXUrls.region; onChosen: OXUrls.region = value }
            Label { text: "Loopback server" }
            Choice {
                options: [{ text: "Answers", value: "200 OK" }, { text: "Fails", value: "503 Service Unavailable" }, { text: "Stays silent", value: "" }]
                value: Services.answer; onChosen: Services.answer = value
            }
            Label { text: "Off-line test" }
            RowLayout {
                Switch {
                    objectName: "offline"; text: "Services count as unreachable"; checked: Services.testOffline
                    onToggled: Services.testOffline = checked; Layout.fillWidth: true
                }
                Button { objectName: "check"; text: "Check now"; onClicked: page.check() }
            }
        }
    }
    Card {
        title: "Services, checked every 5 s"
        Repeater {
            model: Services.names
            RowLayout {
                id: service
                readonly property var look: page.looks[checker.status]
                objectName: modelData; spacing: Theme.gap; Layout.preferredHeight: Theme.touch
                ConnectivityChecker {
                    id: checker
                    readonly property string deployment: OXUrls.environment + OXUrls.region
                    timeout: 3000; scheduleTimeout: 5000
                    url: deployment, OXUrls.url(modelData, OXUrls.dataValue(modelData, "healthPath"))
                    onUrlChanged: startCheck()
                }
                Connections { target: page; function onCheck() { checker.startCheck(); } }
                Rectangle { width: 14; height: 14; radius: 7; color: service.look.color }
                Label { text: modelData; font.bold: true; Layout.preferredWidth: 110 }
                Label { objectName: "status"; text: service.look.text; color: service.look.color; Layout.preferredWidth: 120 }
                Label { objectName: "url"; text: checker.url; color: Theme.faint; elide: Text.ElideMiddle; Layout.fillWidth: true }
            }
        }
        Item { Layout.fillHeight: true }
    }
}
