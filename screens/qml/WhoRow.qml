import QtQuick
import ZelkoVanta.Screens

/// Somebody, or several, whom a signal can be sent to.
PickRow {
    id: row

    required property string label
    required property string symbol
    required property bool chosen
    required property shownColor tint
    required property string initials
    required property color disc
    required property real diameter
    required property shownColor ring
    required property string queue
    required property string doNotDisturb

    readonly property color ink: Theme.dark ? tint.dark : tint.light

    checked: chosen
    edge: ink
    implicitHeight: 40
    // A person stands below the department.
    leftPadding: symbol === "" ? 22 : 10

    contentItem: Item {
        SymbolIcon {
            width: 20
            height: 20
            anchors.verticalCenter: parent.verticalCenter
            visible: row.symbol !== ""
            symbol: row.symbol
            color: row.ink
        }
        MemberAvatar {
            anchors.verticalCenter: parent.verticalCenter
            visible: row.symbol === ""
            // A department has no avatar, but letters must have a size.
            diameter: Math.max(1, row.diameter)
            initials: row.initials
            disc: row.disc
            ringColor: Theme.dark ? row.ring.dark : row.ring.light
        }
        Words {
            id: name
            x: 34
            width: Math.min(Math.ceil(implicitWidth), details.x - x - 8)
            anchors.verticalCenter: parent.verticalCenter
            text: row.label
            font.weight: row.symbol !== "" ? Font.DemiBold : Font.Normal
            Accessible.ignored: true
        }
        Row {
            id: details

            x: Math.min(name.x + Math.ceil(name.implicitWidth) + 8, parent.width - width - 24)
            anchors.verticalCenter: parent.verticalCenter
            spacing: 8

            Words {
                anchors.verticalCenter: parent.verticalCenter
                visible: text !== ""
                text: row.queue
                color: Theme.tertiary
                font.pixelSize: Theme.captionSize
                Accessible.ignored: true
            }
            Rectangle {
                anchors.verticalCenter: parent.verticalCenter
                visible: row.doNotDisturb !== ""
                width: Math.ceil(quiet.implicitWidth) + 10
                height: Math.ceil(quiet.implicitHeight) + 2
                radius: height / 2
                color: Qt.alpha(Theme.stone, 0.18)

                Words {
                    id: quiet
                    anchors.centerIn: parent
                    text: row.doNotDisturb
                    color: Theme.stoneText
                    font.pixelSize: Theme.badgeSize
                    font.weight: Font.DemiBold
                    Accessible.ignored: true
                }
            }
        }
        SymbolIcon {
            x: parent.width - width
            anchors.verticalCenter: parent.verticalCenter
            visible: row.chosen
            symbol: "checkmark"
            color: row.ink
        }
    }
}
