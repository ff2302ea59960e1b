import QtQuick
import ZelkoVanta.Screens

/// What this computer is, beside the title.
Rectangle {
    id: tag

    required property string text

    implicitWidth: Math.ceil(label.implicitWidth) + 12
    implicitHeight: Math.ceil(label.implicitHeight) + 4
    radius: 4
    color: Theme.accent

    Words {
        id: label
        anchors.centerIn: parent
        text: tag.text
        color: Theme.ink
        font.pixelSize: 9
        font.bold: true
        font.letterSpacing: 0.5
    }
}
