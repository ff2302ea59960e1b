import QtQuick
import ZelkoVanta.Screens

/// A button of a row: a word in a capsule, or a symbol on a disc.
PressButton {
    id: control

    required property shownButton spec
    readonly property color ink: Theme.dark ? spec.foreground.dark : spec.foreground.light

    visible: spec.shown
    text: spec.text
    implicitWidth: spec.shown ? (spec.symbol !== "" ? 32 : Math.ceil(implicitContentWidth) + 24) : 0
    implicitHeight: 32
    spokenName: spec.name

    contentItem: Item {
        implicitWidth: label.implicitWidth

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
            anchors.centerIn: parent
            visible: control.spec.symbol !== ""
            symbol: control.spec.symbol
            color: control.ink
        }
    }

    background: Rectangle {
        radius: height / 2
        color: control.down ? Qt.darker(control.spec.fill, 1.2) : control.spec.fill
        border.width: control.spec.outline.a > 0 ? 1 : 0
        border.color: control.spec.outline

        FocusRing {
            shown: control.visualFocus
        }
    }
}
