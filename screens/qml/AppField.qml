import QtQuick
import ZelkoVanta.Screens

/// One line of typed text.
TextInput {
    id: control

    required property string label
    property string placeholderText: ""

    height: 32
    leftPadding: 10
    rightPadding: 10
    color: Theme.primary
    selectedTextColor: Theme.ink
    selectionColor: Theme.accent
    font.pixelSize: Theme.textSize
    verticalAlignment: TextInput.AlignVCenter
    selectByMouse: true
    activeFocusOnTab: true
    clip: true

    Accessible.role: Accessible.EditableText
    Accessible.name: label
    Accessible.description: placeholderText

    // Held down, Return is one press.
    Keys.onReturnPressed: event => event.accepted = event.isAutoRepeat
    Keys.onEnterPressed: event => event.accepted = event.isAutoRepeat

    Text {
        anchors.fill: parent
        anchors.leftMargin: control.leftPadding
        anchors.rightMargin: control.rightPadding
        visible: control.length === 0 && control.preeditText === ""
        text: control.placeholderText
        textFormat: Text.PlainText
        color: Theme.tertiary
        elide: Text.ElideRight
        font.pixelSize: control.font.pixelSize
        verticalAlignment: Text.AlignVCenter
        Accessible.ignored: true
    }

    HoverHandler {
        cursorShape: Qt.IBeamCursor
    }
    Rectangle {
        anchors.fill: parent
        z: -1
        radius: Theme.radius
        color: Theme.card
    }
    // A text that is longer than the field ends before its frame.
    Rectangle {
        x: 2
        y: Theme.radius / 2
        width: control.leftPadding - x
        height: parent.height - 2 * y
        color: Theme.card
    }
    Rectangle {
        x: parent.width - 2 - width
        y: Theme.radius / 2
        // The caret stands behind the last letter.
        width: control.rightPadding - 4
        height: parent.height - 2 * y
        color: Theme.card
    }
    Rectangle {
        anchors.fill: parent
        radius: Theme.radius
        color: "transparent"
        border.width: control.activeFocus ? 2 : 1
        border.color: control.activeFocus ? Theme.focusRing : Theme.hairline
    }
}
