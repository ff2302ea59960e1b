import QtQuick
import QtQuick.Templates as T

/// A press, with the mouse, the keyboard or a screen reader.
T.Button {
    id: control

    enum Kind {
        Plain,
        Primary,
        Act,
        Finish,
        Warn
    }

    property int kind: AppButton.Plain
    /// What is said aloud where the visible text alone would not tell.
    property string spokenName: text

    readonly property color fill: {
        switch (kind) {
        case AppButton.Primary:
            return Theme.accent;
        case AppButton.Act:
            return Theme.dark ? "#3F6FD8" : "#3E6FDB";
        case AppButton.Finish:
            return Theme.dark ? "#247F3E" : "#23803F";
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
            return "#FFFFFF";
        case AppButton.Warn:
            return Theme.redText;
        default:
            return Theme.secondary;
        }
    }

    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: 30
    horizontalPadding: 12
    focusPolicy: Qt.StrongFocus
    opacity: enabled ? 1 : 0.45

    Accessible.role: Accessible.Button
    Accessible.name: spokenName
    Accessible.onPressAction: if (enabled)
        clicked()

    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()

    contentItem: Text {
        text: control.text
        textFormat: Text.PlainText
        color: control.ink
        elide: Text.ElideRight
        font.pixelSize: Theme.captionSize + 1
        font.weight: Font.DemiBold
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        Accessible.ignored: true
    }

    background: Rectangle {
        radius: height / 2
        color: control.down ? Qt.darker(control.fill, 1.15) : control.fill
        border.width: control.visualFocus ? 2 : control.fill.a > 0 ? 0 : 1
        border.color: control.visualFocus ? Theme.focusRing : control.kind === AppButton.Warn ? Theme.redText : Theme.hairline
    }
}
