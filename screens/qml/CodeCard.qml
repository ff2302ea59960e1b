import QtQuick
import ZelkoVanta.Screens

/// A code to be scanned, on a white card, or what is to be said in its place.
Rectangle {
    id: card

    required property string spokenName
    property alias file: image.file
    required property bool hasImage
    /// Without an image.
    property string placeholder
    /// With one that cannot be drawn.
    required property string illegibleText
    readonly property bool showsCode: hasImage && image.legible
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
        visible: card.showsCode
        Accessible.role: Accessible.Graphic
        Accessible.name: card.spokenName
    }
    Words {
        anchors.centerIn: parent
        width: card.width - 32
        visible: !card.showsCode && text !== ""
        text: card.hasImage ? card.illegibleText : card.placeholder
        color: "#5C5142"
        horizontalAlignment: Text.AlignHCenter
        maximumLineCount: 5
        wrapMode: Text.Wrap
    }
}
