import QtQuick
import ZelkoVanta.Screens

/// How far a signal has come. What still waits for somebody is the only solid one.
Rectangle {
    id: face

    required property shownChip chip
    /// A status that this program does not know is as long as the office has it.
    property real widest: Infinity

    readonly property real padding: chip.prominent ? 11 : 8

    implicitWidth: Math.min(widest, Math.ceil(label.implicitWidth) + 2 * padding)
    implicitHeight: Math.ceil(label.implicitHeight) + 2 * (chip.prominent ? 6 : 3)
    radius: height / 2
    color: Theme.dark ? chip.fill.dark : chip.fill.light

    Words {
        id: label
        anchors.centerIn: parent
        width: Math.min(Math.ceil(implicitWidth), parent.width - 2 * face.padding)
        text: face.chip.text
        color: Theme.dark ? face.chip.ink.dark : face.chip.ink.light
        font.pixelSize: face.chip.prominent ? Theme.textSize : Theme.captionSize
        maximumLineCount: 1
        font.weight: Font.DemiBold
    }
}
