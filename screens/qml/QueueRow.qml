pragma ComponentBehavior: Bound

import QtQuick
import ZelkoVanta.Screens

/// One signal: where, what, who, how long, and what can be done about it. Its pieces stand by bindings, without a
/// layout, so that a list of them is made and scrolled quickly.
FocusScope {
    id: row

    required property QueueModel rows

    required property string signalId
    required property string spokenName
    required property color mark
    required property shownColor outline
    required property string room
    required property string type
    required property shownColor typeColor
    required property string waitText
    required property shownColor waitColor
    required property string detail
    required property string note
    required property shownChip chip
    required property shownBadge combined
    required property string position
    required property shownButton acknowledge
    required property shownButton done
    required property shownButton cancel

    readonly property real padding: Theme.margin
    readonly property real indent: padding + 38
    readonly property real gap: 4

    /// The keyboard arrives at one of the buttons.
    signal entered(int reason)

    /// Null if it has none.
    function lastButton() {
        return cancelOffer.button ?? doneOffer.button ?? acknowledgeOffer.button;
    }

    implicitHeight: card.height + 8

    Accessible.role: Accessible.ListItem
    Accessible.name: spokenName

    // A soft shadow, without effects that a window without a graphics driver does not have.
    Rectangle {
        x: 0
        y: 1
        width: card.width
        height: card.height + 1
        radius: Theme.cardRadius
        color: "#0D000000"
    }
    Rectangle {
        id: card

        width: row.width
        height: bar.y + bar.implicitHeight + 10
        radius: Theme.cardRadius
        color: Theme.card
        border.width: 1
        border.color: Theme.dark ? row.outline.dark : row.outline.light
    }
    TypeMark {
        id: typeMark

        x: row.padding
        y: head.y + (head.height - height) / 2
        tint: row.mark
    }
    Item {
        id: head

        readonly property bool oneLine: Math.ceil(roomText.implicitWidth) + 8 + Math.ceil(typeText.implicitWidth) <= width || row.type === ""

        x: row.indent
        y: 10
        width: Math.max(0, timer.x - 12 - x)
        height: Math.max(typeMark.height, oneLine ? roomText.height : roomText.height + typeText.height)

        Words {
            id: roomText

            y: head.oneLine ? (head.height - height) / 2 : 0
            width: head.oneLine ? Math.min(head.width, Math.ceil(implicitWidth)) : head.width
            height: Math.ceil(implicitHeight)
            text: row.room
            font.weight: Font.DemiBold
            fontSizeMode: Text.HorizontalFit
            maximumLineCount: 1
            minimumPixelSize: Math.ceil(Theme.textSize * 0.82)
            verticalAlignment: Text.AlignVCenter
        }
        Words {
            id: typeText

            x: head.oneLine ? roomText.width + 8 : 0
            y: head.oneLine ? roomText.y : roomText.height
            width: head.width - x
            height: Math.ceil(implicitHeight)
            visible: text !== ""
            text: row.type
            color: Theme.dark ? row.typeColor.dark : row.typeColor.light
            font.weight: Font.DemiBold
            fontSizeMode: Text.HorizontalFit
            maximumLineCount: 1
            minimumPixelSize: Math.ceil(Theme.textSize * 0.82)
            verticalAlignment: Text.AlignVCenter
        }
    }
    WaitTimerText {
        id: timer

        x: row.width - row.padding - width
        y: head.y + (head.height - height) / 2
        text: row.waitText
        tint: row.waitColor
    }
    RowLine {
        id: detailLine

        x: row.indent
        y: head.y + head.height + row.gap
        width: row.width - x - row.padding
        text: row.detail
    }
    RowLine {
        id: noteLine

        x: row.indent
        y: detailLine.y + (detailLine.visible ? detailLine.taken + row.gap : 0)
        width: detailLine.width
        text: row.note
    }
    ActionBar {
        id: bar

        x: row.padding
        y: noteLine.y + (noteLine.visible ? noteLine.taken + row.gap : 0)
        width: row.width - x - row.padding
        chips: chipParts
        buttons: buttonParts

        Item {
            id: chipParts

            StatusChip {
                chip: row.chip
                widest: bar.width
            }
            CombinedBadge {
                spec: row.combined
            }
            QueuePosition {
                text: row.position
            }
        }
        Item {
            id: buttonParts

            RowOffer {
                id: acknowledgeOffer
                spec: row.acknowledge
                onTaken: row.rows.pressAcknowledge(row.signalId)
                onEntered: reason => row.entered(reason)
            }
            RowOffer {
                id: doneOffer
                spec: row.done
                onTaken: row.rows.pressDone(row.signalId)
                onEntered: reason => row.entered(reason)
            }
            RowOffer {
                id: cancelOffer
                spec: row.cancel
                onTaken: row.rows.pressCancel(row.signalId)
                onEntered: reason => row.entered(reason)
            }
        }
    }
}
