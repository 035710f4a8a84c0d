import QtQuick 2.15
import QtQuick.Window 2.15
import HXCommon 8.0

Window {
    property int starts
    property string service

    visible: true
    width: 480
    height: 240
    title: "Start number " + starts

    Text {
        anchors.centerIn: parent
        text: service + (checker.status === ConnectivityChecker.SUCCESS ? " is there" : " cannot be reached")
    }

    ConnectivityChecker {
        id: checker
        url: OXUrls.baseUrl(service)
        scheduleTimeout: 10000
        onStatusChanged: console.info(url, status)
        Component.onCompleted: startCheck()
    }
}
