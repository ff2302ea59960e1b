import QtQuick
import QtQuick.Templates as T
import ZelkoVanta.Screens

/// A few words on what the pointer rests on. Screen readers have the name already.
T.ToolTip {
    id: tip

    delay: 600
    y: -implicitHeight - 6
    margins: 6
    padding: 6
    horizontalPadding: 9
    implicitWidth: contentItem.implicitWidth + leftPadding + rightPadding
    implicitHeight: contentItem.implicitHeight + topPadding + bottomPadding

    contentItem: Text {
        text: tip.text
        textFormat: Text.PlainText
        color: Theme.page
        font.pixelSize: Theme.captionSize
        Accessible.ignored: true
    }
    background: Rectangle {
        radius: 6
        color: Theme.primary
    }
}
