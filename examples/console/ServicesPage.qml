import QtQuick 2.15; import QtQuick.Controls 2.15; import QtQuick.Layouts 1.15
import HXCommon 8.0; import Console 1.0

ColumnLayout {
    id: page
    signal check
    readonly property var looks: [ // by ConnectivityChecker.ConnectivityStatus
        { text: qsTr("Not checked yet"), color: Theme.faint }, { text: qsTr("Connecting"), color: Theme.text },
        { text: qsTr("Failed"), color: Theme.bad }, { text: qsTr("Success"), color: Theme.good }]

    function clock(time) { return time.toLocaleTimeString(Qt.locale(), "hh:mm:ss"); }

    spacing: Theme.gap

    Connections { target: Services; function onChanged() { page.check(); } }
    Card {
        title: qsTr("Deployment"); Layout.fillHeight: false
        GridLayout {
            columns: 2; columnSpacing: Theme.gap
            Label { text: qsTr("Environment") }
            Choice { names: Services.environments; value: OXUrls.environment; onChosen: OXUrls.environment = value }
            Label { text: qsTr("Region"); visible: Services.regions.length > 0 }
            Choice { names: Services.regions; value: OXUrls.region; onChosen: OXUrls.region = value; visible: Services.regions.length > 0 }
            Label { text: qsTr("Loopback server") }
            Choice {
                options: [{ text: qsTr("Answers"), value: "200 OK", hint: qsTr("The environment loopback: every request is answered with 200") },
                          { text: qsTr("Fails"), value: "503 Service Unavailable", hint: qsTr("The environment loopback: every request is answered with 503") },
                          { text: qsTr("Stays silent"), value: "", hint: qsTr("The environment loopback: no request is answered") }]
                value: Services.answer; onChosen: Services.answer = value; enabled: OXUrls.environment === "loopback"
            }
            Label { text: qsTr("Off-line test") }
            RowLayout {
                Toggle {
                    objectName: "offline"; text: qsTr("Services count as unreachable"); hint: qsTr("No request is sent, and every check fails")
                    checked: Services.testOffline; onToggled: Services.testOffline = checked; Layout.fillWidth: true
                }
                PushButton { objectName: "check"; text: qsTr("Check now"); hint: qsTr("Checks all services, also before their 5 s are over"); onClicked: page.check() }
            }
        }
    }
    Card {
        title: Services.names.length > 0 ? qsTr("Services, checked every 5 s") : qsTr("There is no service to check")
        Label {
            objectName: "problems"; visible: text !== ""; text: Services.problems.join("\n")
            color: Theme.bad; wrapMode: Text.Wrap; Layout.fillWidth: true
        }
        ListView {
            model: Services.names; clip: true; spacing: 6; cacheBuffer: 100000; Layout.fillWidth: true; Layout.fillHeight: true
            ScrollBar.vertical: Bar { }
            delegate: RowLayout {
                id: service
                property url probed // by the check that runs or was the last
                property url judged // what the verdict is about
                property bool busy: false
                property var started: new Date()
                property string detail
                readonly property int status: Services.testOffline ? ConnectivityChecker.FAILED : judged === checker.url ? checker.status : ConnectivityChecker.UNKNOWN
                readonly property var look: page.looks[status]

                function check() {
                    if (busy)
                        return; // its end starts the next one if it is about another URL
                    busy = true;
                    started = new Date();
                    probed = checker.url;
                    checker.startCheck();
                }
                function conclude(success) {
                    const now = new Date();
                    judged = probed;
                    detail = qsTr("At %1").arg(page.clock(now)) + (busy && !Services.testOffline ? qsTr(", after %1 ms").arg(now - started) : "")
                        + (success ? "" : qsTr(": %1").arg(Services.testOffline ? qsTr("off-line test, nothing was sent") : Services.error(judged)));
                    busy = false;
                    checkIn(judged === checker.url ? 5000 : 1);
                }
                function checkIn(time) {
                    next.interval = time;
                    next.restart();
                }

                objectName: modelData; spacing: Theme.gap; width: ListView.view.width - Theme.gap
                ConnectivityChecker {
                    id: checker
                    readonly property string deployment: OXUrls.environment + OXUrls.region
                    timeout: 3000
                    url: deployment, OXUrls.url(modelData, OXUrls.dataValue(modelData, "healthPath"))
                    onUrlChanged: service.checkIn(1)
                    onStatusReceived: if (a_NewState !== ConnectivityChecker.CONNECTING) service.conclude(a_NewState === ConnectivityChecker.SUCCESS)
                }
                Timer { id: next; onTriggered: service.check() }
                Connections { target: page; function onCheck() { service.check(); } }
                Rectangle { width: 14; height: 14; radius: 7; color: service.look.color }
                Label { text: modelData; font.bold: true; wrapMode: Text.Wrap; Layout.preferredWidth: 110 }
                Label { objectName: "status"; text: service.look.text; color: service.look.color; Layout.preferredWidth: 130 }
                ColumnLayout {
                    spacing: 0
                    Label { objectName: "url"; text: checker.url; font.pixelSize: Theme.small; wrapMode: Text.WrapAnywhere; Layout.fillWidth: true }
                    Label {
                        objectName: "detail"; color: Theme.faint; font.pixelSize: Theme.small; wrapMode: Text.Wrap; Layout.fillWidth: true
                        text: service.busy ? qsTr("Checking since %1 …").arg(page.clock(service.started)) : service.status === ConnectivityChecker.UNKNOWN ? "" : service.detail
                    }
                }
            }
        }
    }
}
