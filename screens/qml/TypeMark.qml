import QtQuick
import ZelkoVanta.Screens

/// The colour of a type of signal, as the office gave it.
Item {
    id: typeMark

    required property color tint

    width: 26
    height: 26

    Rectangle {
        anchors.fill: parent
        radius: width / 2
        color: Qt.alpha(typeMark.tint, 0.22)
        border.width: 1.5
        border.color: Qt.alpha(typeMark.tint, 0.55)
    }
    Rectangle {
        anchors.centerIn: parent
        width: 12
        height: 12
        radius: 6
        color: typeMark.tint
    }
}
