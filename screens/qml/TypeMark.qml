import QtQuick

/// The colour of a type of signal, as the office gave it.
Item {
    id: typeMark

    required property color tint
    property real side: 26

    width: side
    height: side

    Rectangle {
        anchors.fill: parent
        radius: width / 2
        color: Qt.alpha(typeMark.tint, 0.22)
        border.width: 1.5
        border.pixelAligned: false
        border.color: Qt.alpha(typeMark.tint, 0.55)
    }
    Rectangle {
        anchors.centerIn: parent
        width: Math.round(typeMark.side * 12 / 26)
        height: width
        radius: width / 2
        color: typeMark.tint
    }
}
