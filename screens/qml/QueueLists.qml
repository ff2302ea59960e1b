import QtQuick
import ZelkoVanta.Screens

/// What came and what was sent: side by side where there is room, else one at a time.
Item {
    id: lists

    required property QueueScreen screen
    required property bool showsReceived
    required property bool showsSent
    required property bool inSight
    property real room: 0

    readonly property bool wide: width >= 700
    readonly property bool both: showsReceived && showsSent
    readonly property bool receivedShown: showsReceived && (wide || !screen.sentChosen || !showsSent)
    readonly property bool sentShown: showsSent && (wide || !receivedShown)
    readonly property real share: receivedShown && sentShown ? (width - 16) / 2 : width

    QueueTabToggle {
        id: toggle
        width: parent.width
        visible: lists.both
        screen: lists.screen
    }
    SectionHeader {
        id: sentTitle
        visible: lists.showsSent && !lists.showsReceived
        text: qsTr("Sent from here")
    }
    Item {
        id: place

        y: toggle.visible ? toggle.height + 8 : sentTitle.visible ? sentTitle.height + 8 : 0
        width: parent.width
        height: parent.height - y

        SectionHeader {
            id: receivedTitle
            width: lists.share
            visible: text !== "" && lists.receivedShown
            text: lists.screen.received.header
        }
        QueueList {
            y: receivedTitle.visible ? receivedTitle.height + 8 : 0
            width: lists.share
            height: place.height - y
            visible: lists.receivedShown
            rows: lists.screen.received
            label: qsTr("Received")
            inSight: lists.inSight
            room: lists.room
        }
        QueueList {
            x: place.width - width
            width: lists.share
            height: place.height
            visible: lists.sentShown
            rows: lists.screen.sent
            label: qsTr("Sent")
            inSight: lists.inSight
            room: lists.room
        }
    }
}
