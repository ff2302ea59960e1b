import QtQuick
import ZelkoVanta.Screens

/// The mark of the program on its own ground.
Rectangle {
    id: tile

    property real size: 48

    implicitWidth: size
    implicitHeight: size
    radius: 0.22 * size
    color: Theme.accent

    BrandMark {
        anchors.fill: parent
        anchors.margins: 0.19 * tile.size
        color: Theme.ink
    }
}
