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
    // A person stands below the department.
    readonly property real indent: symbol === "" ? 12 : 0
    /// What stands behind the name stands below it where there is not enough room for both.
    readonly property bool stacked: details.implicitWidth > 0 && Math.ceil(name.implicitWidth) + 8 + details.implicitWidth > content.free

    checked: chosen
    edge: ink
    implicitHeight: stacked ? 50 : 40

    contentItem: Item {
        id: content

        readonly property real start: row.indent + 34
        /// Up to the mark of who is chosen.
        readonly property real free: width - start - 24

        SymbolIcon {
            x: row.indent
            width: 20
            height: 20
            anchors.verticalCenter: parent.verticalCenter
            visible: row.symbol !== ""
            symbol: row.symbol
            color: row.ink
        }
        MemberAvatar {
            x: row.indent
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
            x: content.start
            width: Math.min(Math.ceil(implicitWidth), content.free)
            anchors.verticalCenter: parent.verticalCenter
            anchors.verticalCenterOffset: row.stacked ? -9 : 0
            text: row.label
            font.weight: row.symbol !== "" ? Font.DemiBold : Font.Normal
            Accessible.ignored: true
        }
        Item {
            id: details

            readonly property real gap: row.queue !== "" && row.doNotDisturb !== "" ? 8 : 0

            x: row.stacked ? name.x : name.x + name.width + 8
            anchors.verticalCenter: parent.verticalCenter
            anchors.verticalCenterOffset: row.stacked ? 10 : 0
            implicitWidth: (row.queue !== "" ? Math.ceil(queue.implicitWidth) : 0) + gap + quiet.implicitWidth
            width: Math.min(implicitWidth, content.free)
            height: Math.max(queue.height, quiet.height)

            Words {
                id: queue
                width: Math.max(0, details.width - quiet.width - details.gap)
                anchors.verticalCenter: parent.verticalCenter
                visible: row.queue !== ""
                text: row.queue
                color: Theme.tertiary
                font.pixelSize: Theme.captionSize
                Accessible.ignored: true
            }
            Rectangle {
                id: quiet
                x: details.width - width
                anchors.verticalCenter: parent.verticalCenter
                visible: row.doNotDisturb !== ""
                implicitWidth: row.doNotDisturb !== "" ? Math.ceil(quietText.implicitWidth) + 10 : 0
                width: Math.min(implicitWidth, details.width)
                height: Math.ceil(quietText.implicitHeight) + 2
                radius: visible ? height / 2 : 0
                color: Qt.alpha(Theme.stone, 0.18)

                Words {
                    id: quietText
                    x: 5
                    width: Math.max(0, parent.width - 2 * x)
                    anchors.verticalCenter: parent.verticalCenter
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
