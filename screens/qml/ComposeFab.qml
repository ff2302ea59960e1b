pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import ZelkoVanta.Screens

/// The round button that opens a form.
T.Button {
    id: control

    implicitWidth: 52
    implicitHeight: 52
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true

    Accessible.role: Accessible.Button
    Accessible.name: qsTr("Send a request")
    Accessible.onPressAction: clicked()

    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()

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
        // A shadow of a few rings, each fainter than the one within.
        Repeater {
            model: 7

            Rectangle {
                required property int index

                anchors.centerIn: parent
                anchors.verticalCenterOffset: 2
                width: control.width + 2 * index
                height: width
                radius: width / 2
                color: Qt.rgba(0, 0, 0, 0.28 / 7)
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

    Tip {
        text: qsTr("Send a request")
        visible: control.hovered && !control.down
    }
}
