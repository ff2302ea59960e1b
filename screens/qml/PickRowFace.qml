import QtQuick
import ZelkoVanta.Screens

/// What an entry stands on: outlined and tinted where it is chosen.
Rectangle {
    id: face

    required property bool chosen
    required property bool down
    required property bool ringed
    required property color tint

    radius: Theme.radius
    color: chosen ? Qt.alpha(tint, 0.14) : down ? Theme.hairline : Theme.card
    border.width: 1
    border.color: chosen ? tint : Theme.hairline

    FocusRing {
        shown: face.ringed
        radius: Theme.radius + 3
    }
}
