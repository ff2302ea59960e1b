import QtQuick
import QtQuick.Layouts
import ZelkoVanta.Screens

/// A paired computer: who it is, how it is connected, its queues, and the way to a form.
ColumnLayout {
    id: desk

    required property PageModel page
    required property bool inSight

    /// The keyboard is back from a form.
    function comeBack() {
        fab.forceActiveFocus(Qt.OtherFocusReason);
    }

    spacing: 0

    RowLayout {
        Layout.margins: Theme.margin
        Layout.bottomMargin: 6
        spacing: 8

        ColumnLayout {
            Layout.fillWidth: true
            spacing: 2

            Words {
                Layout.fillWidth: true
                text: desk.page.title
                font.pixelSize: Theme.titleSize
                font.weight: Font.DemiBold
                Accessible.role: Accessible.Heading
            }
            Caption {
                Layout.fillWidth: true
                text: desk.page.subtitle
            }
        }
        MemberStatusControl {
            screen: desk.page.queue
        }
    }
    ConnectionBanner {
        Layout.fillWidth: true
        Layout.leftMargin: Theme.margin
        Layout.rightMargin: Theme.margin
        text: desk.page.queue.bannerText
        spins: desk.page.queue.bannerSpins
        inSight: desk.inSight && desk.visible
    }
    RowLayout {
        Layout.margins: Theme.margin
        Layout.bottomMargin: 0
        visible: desk.page.signedInName !== ""
        spacing: 8

        Caption {
            Layout.fillWidth: true
            text: qsTr("Signed in · %@").split("%@").join(desk.page.signedInName)
            font.pixelSize: Theme.textSize
        }
        AppButton {
            text: qsTr("Sign out")
            onClicked: desk.page.signOut()
        }
    }
    AppChoice {
        id: station
        Layout.fillWidth: true
        Layout.margins: Theme.margin
        Layout.bottomMargin: 0
        visible: desk.page.asksForRoom
        label: qsTr("Current room")
        prompt: qsTr("Choose a room…")
        choices: desk.page.rooms
        onChosen: choiceId => {
            desk.page.chooseRoom(choiceId);
            show(desk.page.confirmedRoomId);
        }
    }
    Caption {
        Layout.fillWidth: true
        Layout.margins: Theme.margin
        Layout.bottomMargin: 0
        text: desk.page.hint
        font.pixelSize: Theme.textSize
        maximumLineCount: 3
        wrapMode: Text.Wrap
    }
    SignInView {
        Layout.fillWidth: true
        Layout.fillHeight: true
        visible: desk.page.asksForSignIn
        page: desk.page
        inSight: desk.inSight && desk.visible
    }
    QueueLists {
        Layout.fillWidth: true
        Layout.fillHeight: true
        Layout.margins: Theme.margin
        Layout.bottomMargin: 0
        visible: !desk.page.asksForSignIn
        screen: desk.page.queue
        showsReceived: desk.page.showsReceived
        showsSent: desk.page.showsSent
        inSight: desk.inSight && desk.visible
        room: 72

        ComposeFab {
            id: fab
            x: parent.width - width - 16 + Theme.margin
            y: parent.height - height - 16
            visible: desk.page.canSend
            onClicked: desk.page.openCompose()
        }
    }
    Caption {
        Layout.fillWidth: true
        Layout.leftMargin: Theme.margin
        Layout.rightMargin: Theme.margin
        Layout.bottomMargin: 8
        text: desk.page.error
        color: Theme.red
        font.pixelSize: Theme.textSize
        maximumLineCount: 3
        wrapMode: Text.Wrap
        Accessible.role: Accessible.AlertMessage
    }
    UnlinkCorner {
        Layout.fillWidth: true
        page: desk.page
    }

    Connections {
        target: desk.page
        function onPageChanged() {
            station.show(desk.page.confirmedRoomId);
        }
    }
}
