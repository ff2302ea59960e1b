import QtQuick
import ZelkoVanta.Screens

/// A member as a disc with initials. The name stands beside it, so it says nothing itself.
Item {
    id: avatar

    required property string initials
    /// Transparent for a member without a colour.
    required property color disc
    property real diameter: 28
    property color ringColor: Theme.page

    implicitWidth: diameter
    implicitHeight: diameter

    Rectangle {
        anchors.fill: parent
        radius: width / 2
        color: avatar.disc
        border.width: 1.5
        border.pixelAligned: false
        border.color: avatar.ringColor
    }
    Text {
        anchors.centerIn: parent
        text: avatar.initials
        textFormat: Text.PlainText
        color: Theme.primary
        // Sizes in pixels are whole numbers only.
        font.pointSize: Theme.pointSize(0.36 * avatar.diameter)
        font.bold: true
        Accessible.ignored: true
    }
}
