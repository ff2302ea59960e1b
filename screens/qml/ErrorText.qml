import QtQuick
import ZelkoVanta.Screens

/// What went wrong, read out as soon as it is there.
Caption {
    height: Math.ceil(implicitHeight)
    color: Theme.red
    font.pixelSize: Theme.textSize
    maximumLineCount: 4
    wrapMode: Text.Wrap

    Accessible.role: Accessible.AlertMessage
}
