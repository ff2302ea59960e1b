import QtQuick
import ZelkoVanta.Screens

/// How long a signal has waited.
Digits {
    required property shownColor tint

    width: implicitWidth
    color: Theme.dark ? tint.dark : tint.light
    font.weight: Font.DemiBold
}
