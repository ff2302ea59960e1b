import QtQuick
import ZelkoVanta.Screens

/// Stands at the head of forms and codes, and goes back from there.
IconButton {
    spokenName: qsTr("Back")
    symbol: "chevron.left"
    tint: Theme.primary
}
