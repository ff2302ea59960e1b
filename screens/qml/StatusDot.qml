import QtQuick
import ZelkoVanta.Screens

Rectangle {
    required property shownColor tint

    implicitWidth: 8
    implicitHeight: 8
    radius: 4
    color: Theme.dark ? tint.dark : tint.light
}
