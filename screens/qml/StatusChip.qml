import QtQuick
import ZelkoVanta.Screens

/// How far a signal has come. What still waits for somebody is the only solid one.
Rectangle {
    id: face

    required property shownChip chip

    implicitWidth: Math.ceil(label.implicitWidth) + 2 * (chip.prominent ? 11 : 8)
    implicitHeight: Math.ceil(label.implicitHeight) + 2 * (chip.prominent ? 6 : 3)
    radius: height / 2
    color: Theme.dark ? chip.fill.dark : chip.fill.light

    Words {
        id: label
        anchors.centerIn: parent
        text: face.chip.text
        color: Theme.dark ? face.chip.ink.dark : face.chip.ink.light
        font.pixelSize: face.chip.prominent ? Theme.textSize : Theme.captionSize
        maximumLineCount: 1
        font.weight: Font.DemiBold
    }
}
