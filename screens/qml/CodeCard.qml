import QtQuick
import ZelkoVanta.Screens

/// A code to be scanned, on a white card, or what is to be said in its place.
Rectangle {
    id: card

    required property string spokenName
    property alias file: image.file
    required property bool hasImage
    property string placeholder
    /// Shown, but not to be relied on.
    property bool faded: false

    implicitWidth: 232
    implicitHeight: 232
    radius: Theme.radius
    color: "#FFFFFF"
    border.width: 1
    border.color: Theme.hairline

    CodeImage {
        id: image
        anchors.centerIn: parent
        width: card.width - 20
        height: card.height - 20
        opacity: card.faded ? 0.25 : 1
        visible: card.hasImage
        Accessible.role: Accessible.Graphic
        Accessible.name: card.spokenName
    }
    Words {
        anchors.centerIn: parent
        width: card.width - 32
        visible: !card.hasImage && text !== ""
        text: card.placeholder
        color: "#5C5142"
        horizontalAlignment: Text.AlignHCenter
        maximumLineCount: 5
        wrapMode: Text.Wrap
    }
}
