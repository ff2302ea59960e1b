import QtQuick
import QtQuick.Templates as T

/// One of the two lists, with the number of its rows.
T.Button {
    id: control

    required property int entries
    required property bool current

    implicitHeight: 34
    focusPolicy: Qt.StrongFocus

    Accessible.name: entries > 0 ? text + ", " + entries : text
    Accessible.checkable: true
    Accessible.checked: current
    Accessible.onPressAction: clicked()

    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()

    contentItem: Text {
        text: control.entries > 0 ? control.text + "  " + control.entries : control.text
        textFormat: Text.PlainText
        color: control.current ? Theme.ink : Theme.secondary
        elide: Text.ElideRight
        font.pixelSize: Theme.textSize
        font.weight: Font.DemiBold
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        Accessible.ignored: true
    }

    background: Rectangle {
        radius: Theme.radius
        color: control.current ? Theme.accent : Theme.card
        border.width: control.visualFocus ? 2 : control.current ? 0 : 1
        border.color: control.visualFocus ? Theme.focusRing : Theme.hairline
    }
}
