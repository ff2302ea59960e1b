import QtQuick
import ZelkoVanta.Screens

/// A button with words. Its kind says how much weight it has, and of which sort: the one thing to do here, to take
/// something on, to be done with it, or a step that cannot be taken back.
PressButton {
    id: control

    enum Kind {
        Plain,
        Primary,
        Act,
        Finish,
        Warn
    }

    property int kind: AppButton.Plain
    property string symbol: ""

    readonly property color fill: {
        switch (kind) {
        case AppButton.Primary:
            return Theme.accent;
        case AppButton.Act:
            return Theme.blue;
        case AppButton.Finish:
            return Theme.green;
        default:
            return "transparent";
        }
    }
    readonly property color ink: {
        switch (kind) {
        case AppButton.Primary:
            return Theme.ink;
        case AppButton.Act:
        case AppButton.Finish:
            return Theme.white;
        case AppButton.Warn:
            return Theme.redText;
        default:
            return Theme.secondary;
        }
    }

    implicitWidth: face.implicitWidth + 2 * horizontalPadding
    implicitHeight: 30
    horizontalPadding: 12
    opacity: enabled ? 1 : 0.45
    spokenName: text

    contentItem: Item {
        id: face

        implicitWidth: label.implicitWidth + (control.symbol !== "" ? 24 : 0)

        SymbolIcon {
            x: label.x - 24
            anchors.verticalCenter: parent.verticalCenter
            visible: control.symbol !== ""
            symbol: control.symbol
            color: control.ink
        }
        Text {
            id: label
            x: (parent.width - width + (control.symbol !== "" ? 24 : 0)) / 2
            width: Math.min(implicitWidth, parent.width - (control.symbol !== "" ? 24 : 0))
            anchors.verticalCenter: parent.verticalCenter
            text: control.text
            textFormat: Text.PlainText
            color: control.ink
            elide: Text.ElideRight
            font.pixelSize: Theme.captionSize + 1
            font.weight: Font.DemiBold
            Accessible.ignored: true
        }
    }

    background: Rectangle {
        radius: visible ? height / 2 : 0
        color: control.down ? Qt.darker(control.fill, 1.15) : control.fill
        border.width: control.fill.a > 0 ? 0 : 1
        border.color: control.kind === AppButton.Warn ? Theme.redText : Theme.hairline

        FocusRing {
            shown: control.visualFocus
        }
    }
}
