import QtQuick
import ZelkoVanta.Screens

/// That what is shown may be old. Takes no room while everything is well.
Item {
    id: banner

    required property string text
    required property bool spins
    required property bool inSight

    visible: text !== ""
    implicitHeight: visible ? line.height + 8 : 0

    Row {
        id: line

        anchors.verticalCenter: parent.verticalCenter
        spacing: 6

        Spinner {
            anchors.verticalCenter: parent.verticalCenter
            visible: banner.spins
            running: banner.inSight && banner.visible
        }
        Caption {
            width: Math.min(implicitWidth, banner.width - 18)
            text: banner.text
            Accessible.role: Accessible.AlertMessage
        }
    }
}
