import QtQuick
import ZelkoVanta.Screens

/// The menu with which somebody says how they can be reached.
AppChoice {
    id: control

    required property QueueScreen screen

    label: qsTr("Your status")
    choices: screen.statuses
    chosenId: screen.statusId
    // What is no status that can be chosen reads as the first, and none of them is current.
    prompt: screen.statusText
    visible: screen.hasStatus
    implicitWidth: face.implicitWidth + 24
    implicitHeight: 30
    leftPadding: 12
    rightPadding: 12
    popupWidth: 180
    indicator: null

    onChosen: choiceId => screen.chooseStatus(choiceId)

    contentItem: Item {
        StatusPillLabel {
            id: face
            anchors.centerIn: parent
            dot: control.screen.statusDot
            text: control.screen.statusText
            chevron: true
        }
    }
    background: Rectangle {
        radius: height / 2
        color: Theme.card
        border.width: 1
        border.color: Theme.hairline

        FocusRing {
            shown: control.visualFocus
        }
    }
}
