import QtQuick
import ZelkoVanta.Screens

/// Small text in one line, which takes no room while it is empty.
Words {
    color: Theme.secondary
    font.pixelSize: Theme.captionSize
    maximumLineCount: 1
    visible: text !== ""
}
