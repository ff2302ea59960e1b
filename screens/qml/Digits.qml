pragma ComponentBehavior: Bound

import QtQuick
import ZelkoVanta.Screens

/// A text whose digits are all as wide as the widest of them, so that nothing moves while it counts. Most fonts have
/// such digits, and their text stays in one piece.
Item {
    id: digits

    required property string text
    property color color: Theme.primary
    property alias font: metrics.font

    readonly property real cell: widestIn(metrics.font)
    readonly property bool even: areEvenIn(metrics.font)
    readonly property var pieces: even ? [text] : text.match(/[0-9]|[^0-9]+/g) ?? []

    // These name the font so that they follow it.
    function widestIn(font: font): real {
        let widest = 0;
        for (const digit of "0123456789") {
            widest = Math.max(widest, metrics.advanceWidth(digit));
        }
        return widest;
    }
    function areEvenIn(font: font): bool {
        return Math.abs(metrics.advanceWidth("0123456789") - 10 * digits.cell) < 0.01;
    }
    function widthOf(piece: string, font: font): real {
        return /^[0-9]$/.test(piece) ? digits.cell : metrics.advanceWidth(piece);
    }

    implicitWidth: Math.ceil(line.implicitWidth)
    implicitHeight: line.implicitHeight

    Accessible.role: Accessible.StaticText
    Accessible.name: text

    FontMetrics {
        id: metrics
        font.pixelSize: Theme.textSize
    }
    Row {
        id: line

        Repeater {
            // Their number: a text that only counts on keeps its pieces.
            model: digits.pieces.length

            Text {
                required property int index

                width: digits.widthOf(text, metrics.font)
                text: digits.pieces[index] ?? ""
                textFormat: Text.PlainText
                color: digits.color
                font: metrics.font
                horizontalAlignment: Text.AlignHCenter
                Accessible.ignored: true
            }
        }
    }
}
