import QtQuick
import ZelkoVanta.Screens

/// Whether what is shown is live.
Row {
    id: line

    required property PageModel page

    spacing: 6
    visible: page.connectionText !== ""

    Rectangle {
        anchors.verticalCenter: parent.verticalCenter
        width: 8
        height: 8
        radius: 4
        color: line.page.connected ? Theme.green : line.page.connectionLost ? Theme.red : Theme.accent
    }
    Caption {
        width: Math.min(implicitWidth, line.width - 14)
        text: line.page.connectionText
        color: line.page.connectionLost ? Theme.redText : Theme.secondary
        Accessible.role: Accessible.AlertMessage
    }
}
