import QtQuick

/// How far a signal has come. What still waits for somebody is the only solid one.
Rectangle {
    id: chip

    required property string status
    required property string text

    readonly property bool waiting: status === "waiting"

    implicitWidth: label.implicitWidth + 16
    implicitHeight: label.implicitHeight + 8
    radius: height / 2
    color: waiting ? Theme.accent : status === "acknowledged" ? "#295789F2" : "#298A8170"

    Words {
        id: label
        anchors.centerIn: parent
        text: chip.text
        color: chip.waiting ? Theme.ink : chip.status === "acknowledged" ? Theme.blueText : Theme.secondary
        font.pixelSize: Theme.captionSize
        font.weight: Font.DemiBold
    }
}
