import QtQuick
import ZelkoVanta.Screens

/// The switch between the two lists.
Item {
    id: toggle

    required property QueueScreen screen

    implicitHeight: 36

    QueueTabButton {
        width: (parent.width - 8) / 2
        tab: toggle.screen.receivedTab
        onClicked: toggle.screen.sentChosen = false
    }
    QueueTabButton {
        x: (parent.width + 8) / 2
        width: (parent.width - 8) / 2
        tab: toggle.screen.sentTab
        onClicked: toggle.screen.sentChosen = true
    }
}
