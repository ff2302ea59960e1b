import QtQuick
import ZelkoVanta.Screens

/// A button of a row: a word in a capsule, or a symbol on a disc.
PressButton {
    id: control

    required property shownButton spec
    readonly property color ink: Theme.dark ? spec.foreground.dark : spec.foreground.light

    text: spec.text
    implicitWidth: Math.ceil(face.implicitWidth) + 2 * spec.horizontalPadding
    implicitHeight: Math.ceil(face.implicitHeight) + 2 * spec.verticalPadding
    spokenName: spec.name

    contentItem: Item {
        id: face

        implicitWidth: control.spec.symbol !== "" ? symbol.implicitWidth : label.implicitWidth
        implicitHeight: control.spec.symbol !== "" ? symbol.implicitHeight : label.implicitHeight

        Text {
            id: label
            anchors.centerIn: parent
            text: control.text
            textFormat: Text.PlainText
            color: control.ink
            font.pixelSize: Theme.captionSize
            font.weight: Font.DemiBold
            Accessible.ignored: true
        }
        SymbolIcon {
            id: symbol
            anchors.centerIn: parent
            visible: control.spec.symbol !== ""
            symbol: control.spec.symbol
            color: control.ink
        }
    }

    background: Rectangle {
        radius: visible ? height / 2 : 0
        color: control.down ? Qt.darker(control.spec.fill, 1.2) : control.spec.fill
        border.width: control.spec.outline.a > 0 ? 1 : 0
        border.color: control.spec.outline

        FocusRing {
            shown: control.visualFocus
        }
    }
}
