import QtQuick
import ZelkoVanta.Screens

/// That one call is for several people. Takes no room without a text.
Rectangle {
    id: badge

    required property string text

    visible: text !== ""
    implicitWidth: visible ? Math.ceil(label.implicitWidth) + 16 : 0
    implicitHeight: Math.ceil(label.implicitHeight) + 6
    radius: 8
    color: Qt.alpha(Theme.blue, 0.14)

    Words {
        id: label
        anchors.centerIn: parent
        text: badge.text
        color: Theme.blueText
        font.pixelSize: Theme.captionSize
        font.weight: Font.Medium
    }
}
