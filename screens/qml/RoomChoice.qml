import QtQuick
import ZelkoVanta.Screens

/// In which room somebody is who works in several.
AppChoice {
    id: control

    required property PageModel page

    label: qsTr("Current room")
    prompt: qsTr("Choose a room…")
    choices: page.rooms
    onChosen: choiceId => {
        page.chooseRoom(choiceId);
        // What is shown is what the office says.
        show(page.confirmedRoomId);
    }
    Component.onCompleted: show(page.confirmedRoomId)

    Connections {
        target: control.page
        function onPageChanged() {
            control.show(control.page.confirmedRoomId);
        }
    }
}
