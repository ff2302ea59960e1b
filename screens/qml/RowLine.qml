import QtQuick
import ZelkoVanta.Screens

/// Small text in at most two lines, which takes no room while it is empty.
Words {
    readonly property real taken: visible ? Math.ceil(implicitHeight) : 0

    visible: text !== ""
    color: Theme.secondary
    font.pixelSize: Theme.captionSize
    maximumLineCount: 2
    wrapMode: Text.Wrap
}
