import QtQuick
import QtQuick.Templates as T
import ZelkoVanta.Screens

T.ScrollBar {
    id: control

    implicitWidth: 8
    padding: 1
    minimumSize: 0.06
    visible: size < 1
    Accessible.ignored: true

    contentItem: Rectangle {
        implicitWidth: 6
        radius: 3
        color: Theme.tertiary
        opacity: control.pressed ? 0.9 : control.hovered ? 0.7 : 0.45
    }
}
