import QtQuick
import QtQuick.Layouts
import ZelkoVanta.Screens

/// A paired computer: who it is, how it is connected, its queues, and a form to send from.
ColumnLayout {
    id: desk

    required property PageModel page
    required property bool inSight

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
        AppChoice {
            id: status
            Layout.preferredWidth: 136
            visible: desk.page.hasStatus
            label: qsTr("Your status")
            choices: desk.page.statuses
            onChosen: choiceId => {
                desk.page.setStatus(choiceId);
                // What is shown is what the office says.
                show(desk.page.memberStatus);
            }
            Component.onCompleted: show(desk.page.memberStatus)
        }
    }
    ConnectionLine {
        Layout.fillWidth: true
        Layout.leftMargin: Theme.margin
        Layout.rightMargin: Theme.margin
        page: desk.page
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
    SignalLists {
        Layout.fillWidth: true
        Layout.fillHeight: true
        Layout.margins: Theme.margin
        visible: !desk.page.asksForSignIn
        page: desk.page
        inSight: desk.inSight
    }
    Caption {
        Layout.fillWidth: true
        Layout.leftMargin: Theme.margin
        Layout.rightMargin: Theme.margin
        Layout.bottomMargin: 8
        text: desk.page.error
        color: Theme.redText
        font.pixelSize: Theme.textSize
        maximumLineCount: 3
        wrapMode: Text.Wrap
        Accessible.role: Accessible.AlertMessage
    }
    SendForm {
        Layout.fillWidth: true
        visible: desk.page.canSend
        page: desk.page
    }
    UnlinkCorner {
        Layout.fillWidth: true
        page: desk.page
    }

    Connections {
        target: desk.page
        function onPageChanged() {
            status.show(desk.page.memberStatus);
            station.show(desk.page.confirmedRoomId);
        }
    }
}
