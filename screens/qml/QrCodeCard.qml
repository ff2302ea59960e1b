import QtQuick
import ZelkoVanta.Screens

/// A code for a phone's camera: white whatever the appearance, its modules sharp. While there is none yet, something
/// is seen to go on.
Rectangle {
    id: card

    required property string spokenName
    required property bool hasImage
    property alias file: image.file
    property real side: 200
    property string caption: ""
    /// How long the code will be there; empty where it stays.
    property string refreshText: ""

    implicitWidth: side + 32
    implicitHeight: content.height + 32
    radius: Theme.cardRadius
    color: Theme.white
    border.width: 1
    border.color: Theme.hairline

    Column {
        id: content

        x: 16
        y: 16
        width: card.side
        spacing: 8

        Item {
            width: card.side
            height: card.side

            CodeImage {
                id: image
                anchors.fill: parent
                visible: card.hasImage
                Accessible.role: Accessible.Graphic
                Accessible.name: card.spokenName
            }
            Spinner {
                anchors.centerIn: parent
                side: 28
                visible: !card.hasImage
                tint: "#5C5142"
            }
        }
        Words {
            width: parent.width
            visible: text !== ""
            text: card.caption
            color: "#5C5142"
            font.pixelSize: Theme.captionSize
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
        }
        Words {
            width: parent.width
            visible: text !== ""
            text: card.refreshText
            color: "#8A8170"
            font.pixelSize: Theme.captionSize
            horizontalAlignment: Text.AlignHCenter
        }
    }
}
