import QtQuick
import ZelkoVanta.Screens

/// A text that is read out as it stands, from the left whatever direction a name in it has.
Text {
    color: Theme.primary
    elide: Text.ElideRight
    font.pixelSize: Theme.textSize
    horizontalAlignment: Text.AlignLeft
    textFormat: Text.PlainText

    Accessible.role: Accessible.StaticText
    Accessible.name: text
}
