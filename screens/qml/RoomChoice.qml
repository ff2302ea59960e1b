import QtQuick
import ZelkoVanta.Screens

/// In which room somebody is who works in several.
AppChoice {
    id: control

    required property PageModel page

    label: qsTr("Current room")
    prompt: qsTr("Choose a room…")
    choices: page.rooms
    chosenId: page.confirmedRoomId
    onChosen: choiceId => page.chooseRoom(choiceId)
}
