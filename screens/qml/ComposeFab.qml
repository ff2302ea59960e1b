pragma ComponentBehavior: Bound

import QtQuick
import ZelkoVanta.Screens

/// The round button that opens a form.
PressButton {
    id: control

    implicitWidth: 52
    implicitHeight: 52
    hoverEnabled: true
    spokenName: qsTr("Send a request")

    contentItem: Item {
        SymbolIcon {
            anchors.centerIn: parent
            width: 22
            height: 22
            symbol: "plus"
            color: Theme.ink
        }
    }

    background: Item {
        // A shadow as deep as it is wide, in rings of a pixel that all lie upon each other below the disc.
        Repeater {
            id: shadow

            readonly property real depth: 0.28

            model: 7

            Rectangle {
                required property int index

                anchors.centerIn: parent
                width: control.width + 2 * (index + 1)
                height: width
                radius: width / 2
                color: Qt.rgba(0, 0, 0, 1 - Math.pow(1 - shadow.depth, 1 / shadow.model))
            }
        }
        // A gradient has rough edges without a graphics driver, so a plain disc lends it its own.
        Rectangle {
            anchors.fill: parent
            radius: width / 2
            color: Theme.accent
        }
        Rectangle {
            anchors.fill: parent
            anchors.margins: 1
            radius: width / 2
            gradient: Gradient {
                GradientStop {
                    position: 0
                    color: control.down ? Theme.accent : Theme.accentLight
                }
                GradientStop {
                    position: 1
                    color: Theme.accent
                }
            }
        }
        FocusRing {
            shown: control.visualFocus
        }
    }

    TipPlace {
        text: control.spokenName
        shown: (control.hovered || control.visualFocus) && !control.down
    }
}
