import QtQuick
import QtQuick.Templates as T
import ZelkoVanta.Screens

/// One half of the switch between the two lists, with the number of its rows.
T.Button {
    id: control

    required property shownTab tab
    readonly property color ink: Theme.dark ? tab.ink.dark : tab.ink.light

    text: tab.title
    implicitHeight: 36
    focusPolicy: Qt.StrongFocus

    Accessible.role: Accessible.Button
    Accessible.name: tab.badge !== "" ? tab.title + ", " + tab.badge : tab.title
    Accessible.checkable: true
    Accessible.checked: tab.selected
    Accessible.onPressAction: clicked()

    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()

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
                radius: height / 2
                color: control.tab.badgeFill

                Text {
                    id: number
                    anchors.centerIn: parent
                    text: control.tab.badge
                    textFormat: Text.PlainText
                    color: Theme.ink
                    font.pixelSize: Theme.badgeSize
                    font.weight: Font.Bold
                    Accessible.ignored: true
                }
            }
        }
    }

    background: Rectangle {
        radius: Theme.radius
        color: Theme.dark ? control.tab.fill.dark : control.tab.fill.light
        border.width: control.tab.selected ? 0 : 1
        border.color: Theme.dark ? control.tab.outline.dark : control.tab.outline.light

        FocusRing {
            shown: control.visualFocus
            radius: Theme.radius + 3
        }
    }
}
