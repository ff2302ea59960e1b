import QtQuick
import ZelkoVanta.Screens

/// The face of a choice: what it stands at, in a few words.
Row {
    id: pill

    required property shownColor dot
    required property string text
    property bool chevron: false

    spacing: 6

    StatusDot {
        anchors.verticalCenter: parent.verticalCenter
        tint: pill.dot
    }
    Text {
        anchors.verticalCenter: parent.verticalCenter
        text: pill.text
        textFormat: Text.PlainText
        color: Theme.primary
        font.pixelSize: Theme.captionSize
        font.weight: Font.Medium
        Accessible.ignored: true
    }
    SymbolIcon {
        anchors.verticalCenter: parent.verticalCenter
        visible: pill.chevron
        width: 8
        height: 8
        symbol: "chevron.up.chevron.down"
        color: Theme.tertiary
    }
}
