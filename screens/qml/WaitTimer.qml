import QtQuick

/// How long a signal has waited.
Text {
    required property PageModel page
    required property double since
    required property double now

    text: page.waitTime(since, now)
    textFormat: Text.PlainText
    color: page.isLongWait(since, now) ? Theme.redText : Theme.secondary
    font.pixelSize: Theme.textSize
    font.weight: Font.DemiBold
}
