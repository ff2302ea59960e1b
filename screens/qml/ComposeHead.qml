pragma ComponentBehavior: Bound

import QtQuick
import ZelkoVanta.Screens

/// Above the people of a form: the room and the kind of signal.
Item {
    id: head

    required property ComposeModel compose

    /// The list of rooms is open.
    readonly property bool choosesRoom: room.popup.visible

    /// The keyboard came between these two heights, and not by mouse: what is pressed with it must not move away.
    signal entered(real top, real bottom)

    implicitHeight: content.height + 12

    Column {
        id: content

        x: Theme.margin
        width: head.width - 2 * Theme.margin
        spacing: 8

        SectionHeader {
            width: parent.width
            text: head.compose.roomTitle
        }
        Words {
            width: parent.width
            visible: !head.compose.choosesRoom
            text: head.compose.fixedRoom
            font.weight: Font.DemiBold
        }
        AppChoice {
            id: room

            width: parent.width
            visible: head.compose.choosesRoom
            label: head.compose.roomTitle
            prompt: head.compose.roomPrompt
            choices: head.compose.rooms
            chosenId: head.compose.selectedRoomId
            onChosen: choiceId => head.compose.chooseRoom(choiceId)
            onEntered: reason => {
                if (reason !== Qt.MouseFocusReason)
                    head.entered(0, y + height + 8);
            }
        }
        Caption {
            width: parent.width
            text: head.compose.roomHint
            maximumLineCount: 3
            wrapMode: Text.Wrap
        }
        SectionHeader {
            topPadding: 6
            width: parent.width
            text: head.compose.typeTitle
        }
        FlowLayout {
            id: types

            width: parent.width
            spacing: 8
            lineSpacing: 8
            Accessible.role: Accessible.Grouping
            Accessible.name: head.compose.typeTitle

            Repeater {
                model: head.compose.types

                TypeChoice {
                    required property string typeId

                    widest: types.width
                    onClicked: head.compose.chooseType(typeId)
                    onEntered: reason => {
                        if (reason !== Qt.MouseFocusReason)
                            head.entered(types.y + y - 8, types.y + y + height + 8);
                    }
                }
            }
        }
        SectionHeader {
            topPadding: 6
            width: parent.width
            text: head.compose.whoTitle
        }
        Caption {
            width: parent.width
            text: head.compose.whoExplanation
            maximumLineCount: 3
            wrapMode: Text.Wrap
        }
    }
}
