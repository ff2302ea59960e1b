import QtQuick
import QtQuick.Layouts

/// What came and what was sent: side by side where there is room, else one at a time.
ColumnLayout {
    id: lists

    required property PageModel page
    required property bool inSight

    readonly property bool wide: width >= 700
    readonly property bool both: page.showsReceived && page.showsSent
    readonly property bool receivedShown: page.showsReceived && (wide || receivedTab.checked)

    spacing: 8

    RowLayout {
        visible: lists.page.showsReceived || lists.page.showsSent
        spacing: 8

        ListTab {
            id: receivedTab
            Layout.fillWidth: true
            Layout.preferredWidth: 1
            visible: lists.page.showsReceived
            checkable: !lists.wide
            checked: true
            text: qsTr("Received")
            entries: lists.page.received.count
        }
        ListTab {
            Layout.fillWidth: true
            Layout.preferredWidth: 1
            visible: lists.page.showsSent
            checkable: !lists.wide
            checked: !lists.page.showsReceived
            text: qsTr("Sent")
            entries: lists.page.sent.count
        }
    }
    RowLayout {
        Layout.fillWidth: true
        Layout.fillHeight: true
        spacing: 16

        SignalList {
            Layout.fillWidth: true
            Layout.fillHeight: true
            Layout.preferredWidth: 1
            visible: lists.receivedShown
            page: lists.page
            rows: lists.page.received
            label: qsTr("Received")
            emptyText: qsTr("No one is waiting for you.")
            inSight: lists.inSight
        }
        SignalList {
            Layout.fillWidth: true
            Layout.fillHeight: true
            Layout.preferredWidth: 1
            visible: lists.page.showsSent && (lists.wide || !lists.receivedShown)
            page: lists.page
            rows: lists.page.sent
            label: qsTr("Sent")
            emptyText: qsTr("Nothing sent yet.")
            inSight: lists.inSight
        }
    }
}
