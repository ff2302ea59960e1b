import QtQuick
import ZelkoVanta.Screens

/// How long a signal has waited.
Words {
    required property shownColor tint

    // As wide as its digits may become for a while, so that nothing beside it moves with each second.
    width: Math.ceil(implicitWidth / 12) * 12
    horizontalAlignment: Text.AlignRight
    elide: Text.ElideNone
    color: Theme.dark ? tint.dark : tint.light
    font.weight: Font.DemiBold
}
