import QtQuick
import QtQuick.Layouts
import ZelkoVanta.Screens

/// What came and what was sent: side by side where there is room, else one at a time.
ColumnLayout {
    id: lists

    required property PageModel page
    required property bool inSight

    readonly property bool wide: width >= 700
    property bool sentChosen: false
    readonly property bool receivedShown: page.showsReceived && (wide || !sentChosen)
    readonly property bool sentShown: page.showsSent && (wide || !receivedShown)

    spacing: 8

    RowLayout {
        visible: lists.page.showsReceived && lists.page.showsSent
        spacing: 8

        ListTab {
            Layout.fillWidth: true
            Layout.preferredWidth: 1
            current: lists.receivedShown
            text: qsTr("Received")
            entries: lists.page.received.count
            onClicked: lists.sentChosen = false
        }
        ListTab {
            Layout.fillWidth: true
            Layout.preferredWidth: 1
            current: lists.sentShown
            text: qsTr("Sent")
            entries: lists.page.sent.count
            onClicked: lists.sentChosen = true
        }
    }
    Caption {
        visible: lists.page.showsSent && !lists.page.showsReceived
        text: qsTr("Sent from here")
    }
    // By position: a layout overlooks a list that appears while it is being laid out.
    Item {
        id: place

        readonly property double share: lists.receivedShown && lists.sentShown ? (width - 16) / 2 : width

        Layout.fillWidth: true
        Layout.fillHeight: true

        SignalList {
            width: place.share
            height: place.height
            visible: lists.receivedShown
            page: lists.page
            rows: lists.page.received
            label: qsTr("Received")
            emptyText: qsTr("No one is waiting for you.")
            inSight: lists.inSight
        }
        SignalList {
            x: place.width - width
            width: place.share
            height: place.height
            visible: lists.sentShown
            page: lists.page
            rows: lists.page.sent
            label: qsTr("Sent")
            emptyText: qsTr("Nothing sent yet.")
            inSight: lists.inSight
        }
    }
}
