import QtQuick
import ZelkoVanta.Screens

/// The place in the queue of the whole office. Takes no room without a text.
Item {
    id: place

    required property string text

    visible: text !== ""
    implicitWidth: visible ? Math.ceil(label.implicitWidth) : 0
    implicitHeight: Math.ceil(label.implicitHeight)

    Words {
        id: label
        text: place.text
        color: Theme.tertiary
        font.pixelSize: Theme.captionSize
        maximumLineCount: 1
        font.weight: Font.DemiBold
    }
}
