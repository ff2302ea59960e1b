pragma ComponentBehavior: Bound

import QtQuick
import ZelkoVanta.Screens

/// The form in which a signal is made. Escape leaves it, Control and Return send from everywhere in it.
FocusScope {
    id: form

    required property ComposeModel compose
    /// How the keyboard comes here.
    required property int focusReason

    /// Something was pressed that may be the end of the form, by mouse or by key.
    signal pressed(int by)

    focus: true
    Accessible.role: Accessible.Form
    Accessible.name: compose.title

    Keys.onEscapePressed: {
        pressed(Qt.ShortcutFocusReason);
        compose.cancel();
    }
    Component.onCompleted: back.forceActiveFocus(focusReason)

    // A shortcut, since Return alone is a press on whatever has the keyboard.
    Shortcut {
        sequences: ["Ctrl+Return", "Ctrl+Enter"]
        enabled: !picker.choosesRoom
        autoRepeat: false
        onActivated: {
            form.pressed(Qt.ShortcutFocusReason);
            form.compose.send();
        }
    }

    Rectangle {
        anchors.fill: parent
        color: Theme.page
    }
    Item {
        id: header

        width: parent.width
        height: 46

        DesktopBackButton {
            id: back
            x: 8
            anchors.verticalCenter: parent.verticalCenter
            onClicked: {
                form.pressed(visualFocus ? Qt.ShortcutFocusReason : Qt.OtherFocusReason);
                form.compose.cancel();
            }
        }
        Words {
            x: 44
            width: parent.width - x - Theme.margin
            anchors.verticalCenter: parent.verticalCenter
            text: form.compose.title
            font.pixelSize: Theme.headlineSize
            font.weight: Font.DemiBold
            Accessible.role: Accessible.Heading
        }
    }
    WhoPicker {
        id: picker

        anchors.top: header.bottom
        anchors.bottom: foot.top
        width: parent.width
        compose: form.compose
    }
    ComposeFoot {
        id: foot

        anchors.bottom: parent.bottom
        width: parent.width
        compose: form.compose
        onPressed: by => form.pressed(by)
    }
}
