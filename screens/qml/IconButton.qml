import QtQuick
import ZelkoVanta.Screens

/// A press on a symbol. It shows no words, so it must have a name.
PressButton {
    id: control

    required property string symbol
    property color tint: Theme.secondary
    property color fill: "transparent"
    property real symbolSize: 16
    /// Words beside the pointer; none where the symbol is plain enough.
    property string tip: ""

    implicitWidth: 30
    implicitHeight: 30
    opacity: enabled ? 1 : 0.45
    hoverEnabled: true

    contentItem: Item {
        SymbolIcon {
            anchors.centerIn: parent
            width: control.symbolSize
            height: control.symbolSize
            symbol: control.symbol
            color: control.tint
        }
    }

    background: Rectangle {
        radius: height / 2
        color: control.fill.a > 0 ? (control.down ? Qt.darker(control.fill, 1.15) : control.fill) : control.down || control.hovered ? Theme.hairline : "transparent"
        FocusRing {
            shown: control.visualFocus
        }
    }

    TipPlace {
        text: control.tip
        shown: (control.hovered || control.visualFocus) && !control.down
    }
}
