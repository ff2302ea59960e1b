import QtQuick
import ZelkoVanta.Screens

/// That one call is for several people. Takes no room without a text.
Rectangle {
    id: badge

    required property shownBadge spec

    visible: spec.text !== ""
    implicitWidth: visible ? Math.ceil(label.implicitWidth) + 16 : 0
    implicitHeight: Math.ceil(label.implicitHeight) + 6
    radius: visible ? 8 : 0
    color: spec.fill

    Words {
        id: label
        anchors.centerIn: parent
        text: badge.spec.text
        color: Theme.dark ? badge.spec.ink.dark : badge.spec.ink.light
        font.pixelSize: Theme.captionSize
        maximumLineCount: 1
        font.weight: Font.Medium
    }
}
