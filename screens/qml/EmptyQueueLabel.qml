import QtQuick
import ZelkoVanta.Screens

/// In place of the rows of an empty list.
Item {
    id: label

    required property string systemImage
    required property string title
    property string subtitle: ""

    implicitHeight: content.height + 56

    Column {
        id: content

        y: 28
        width: parent.width
        spacing: 6

        SymbolIcon {
            anchors.horizontalCenter: parent.horizontalCenter
            width: 28
            height: 28
            symbol: label.systemImage
            color: Theme.tertiary
        }
        Words {
            width: parent.width
            text: label.title
            color: Theme.secondary
            font.weight: Font.Medium
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
        }
        Words {
            width: parent.width
            visible: text !== ""
            text: label.subtitle
            color: Theme.tertiary
            font.pixelSize: Theme.captionSize
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
        }
    }
}
