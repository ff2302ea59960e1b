pragma ComponentBehavior: Bound

import QtQuick
import ZelkoVanta.Screens

/// Something is going on. Goes in a few steps a second, which costs next to nothing where pictures are drawn without a
/// graphics driver.
Item {
    id: spinner

    property real side: 12
    property bool running: true
    property color tint: Theme.secondary

    property int step: 0

    implicitWidth: side
    implicitHeight: side

    Timer {
        interval: 150
        repeat: true
        running: spinner.running && spinner.visible
        onTriggered: spinner.step = (spinner.step + 1) % 8
    }
    Repeater {
        model: 8

        Rectangle {
            required property int index

            readonly property real turn: index * Math.PI / 4
            readonly property real dot: Math.max(2, spinner.side / 5)

            x: spinner.side / 2 + Math.sin(turn) * (spinner.side - dot) / 2 - dot / 2
            y: spinner.side / 2 - Math.cos(turn) * (spinner.side - dot) / 2 - dot / 2
            width: dot
            height: dot
            radius: visible ? dot / 2 : 0
            color: spinner.tint
            opacity: 0.25 + 0.75 * ((index - spinner.step + 8) % 8) / 7
        }
    }
}
