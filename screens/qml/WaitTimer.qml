import QtQuick
import ZelkoVanta.Screens

/// How long a signal has waited.
Words {
    required property PageModel page
    required property double since
    required property double now

    text: page.waitTime(since, now)
    color: page.isLongWait(since, now) ? Theme.redText : Theme.secondary
    font.weight: Font.DemiBold
}
