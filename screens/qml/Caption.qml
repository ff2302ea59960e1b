import QtQuick

/// Small text in one line, from the left whatever direction a name in it has.
Text {
    color: Theme.secondary
    elide: Text.ElideRight
    font.pixelSize: Theme.captionSize
    horizontalAlignment: Text.AlignLeft
    maximumLineCount: 1
    textFormat: Text.PlainText
    visible: text !== ""
}
