import QtQuick
import ZelkoVanta.Screens

/// One half of the switch between the two lists, with the number of its rows.
PressButton {
    id: control

    required property shownTab tab
    readonly property color ink: Theme.dark ? tab.ink.dark : tab.ink.light

    text: tab.title
    implicitHeight: 36
    spokenName: tab.badge !== "" ? tab.title + ", " + tab.badge : tab.title

    Accessible.checkable: true
    Accessible.checked: tab.selected

    contentItem: Item {
        Row {
            anchors.centerIn: parent
            spacing: 6

            Text {
                anchors.verticalCenter: parent.verticalCenter
                text: control.text
                textFormat: Text.PlainText
                color: control.ink
                font.pixelSize: Theme.textSize
                font.weight: Font.DemiBold
                Accessible.ignored: true
            }
            Rectangle {
                anchors.verticalCenter: parent.verticalCenter
                visible: control.tab.badge !== ""
                width: Math.max(height, number.implicitWidth + 10)
                height: number.implicitHeight + 2
                radius: visible ? height / 2 : 0
                color: control.tab.badgeFill

                Digits {
                    id: number
                    anchors.centerIn: parent
                    text: control.tab.badge
                    color: Theme.ink
                    font.pixelSize: Theme.badgeSize
                    font.weight: Font.Bold
                    Accessible.ignored: true
                }
            }
        }
    }

    background: Rectangle {
        radius: visible ? Theme.radius : 0
        color: Theme.dark ? control.tab.fill.dark : control.tab.fill.light
        border.width: control.tab.selected ? 0 : 1
        border.color: Theme.dark ? control.tab.outline.dark : control.tab.outline.light

        FocusRing {
            shown: control.visualFocus
            radius: shown ? Theme.radius + 3 : 0
        }
    }
}
