import QtQuick
import QtQuick.Templates as T
import ZelkoVanta.Screens

/// One line of typed text.
T.TextField {
    id: control

    required property string label

    implicitHeight: 32
    leftPadding: 10
    rightPadding: 10
    color: Theme.primary
    placeholderTextColor: Theme.tertiary
    selectedTextColor: Theme.ink
    selectionColor: Theme.accent
    font.pixelSize: Theme.textSize
    verticalAlignment: TextInput.AlignVCenter
    selectByMouse: true

    Accessible.role: Accessible.EditableText
    Accessible.name: label

    Text {
        anchors.fill: parent
        anchors.leftMargin: control.leftPadding
        anchors.rightMargin: control.rightPadding
        visible: control.length === 0 && control.preeditText === ""
        text: control.placeholderText
        textFormat: Text.PlainText
        color: control.placeholderTextColor
        elide: Text.ElideRight
        font: control.font
        verticalAlignment: Text.AlignVCenter
        Accessible.ignored: true
    }

    background: Rectangle {
        radius: Theme.radius
        color: Theme.card
        border.width: control.activeFocus ? 2 : 1
        border.color: control.activeFocus ? Theme.focusRing : Theme.hairline
    }
}
