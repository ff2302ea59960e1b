import QtQuick
import ZelkoVanta.Screens

/// Shows where the keyboard is: around what it stands on, so that no text moves.
Rectangle {
    required property bool shown

    anchors.fill: parent
    anchors.margins: -3
    visible: shown
    color: "transparent"
    border.width: 2
    border.color: Theme.focusRing
    radius: shown ? height / 2 : 0
}
