import QtQuick
import ZelkoVanta.Screens

/// Below the people of a form, always in sight: what will happen, the note, and the way out.
Rectangle {
    id: foot

    required property ComposeModel compose

    /// Something is pressed that may be the end of the form, by mouse or by key.
    signal pressed(int by)

    function reasonOf(button: Press): int {
        return button.visualFocus ? Qt.ShortcutFocusReason : Qt.OtherFocusReason;
    }

    implicitHeight: content.height + 2 * Theme.margin
    color: Theme.band

    Rectangle {
        width: parent.width
        height: 1
        color: Theme.hairline
    }
    Column {
        id: content

        x: Theme.margin
        y: Theme.margin
        width: foot.width - 2 * Theme.margin
        spacing: 8

        Caption {
            width: parent.width
            text: foot.compose.whoHint
            color: Theme.primary
            font.weight: Font.Medium
            maximumLineCount: 3
            wrapMode: Text.Wrap
        }
        AppField {
            id: note

            width: parent.width
            label: qsTr("Note")
            placeholderText: foot.compose.notePlaceholder
            // Also what a screen reader writes, which is not told as typed. The form keeps only so much of it.
            onTextChanged: {
                if (text !== foot.compose.note) {
                    const cursor = cursorPosition;
                    foot.compose.editNote(text);
                    if (text !== foot.compose.note) {
                        text = foot.compose.note;
                        cursorPosition = Math.min(cursor, length);
                    }
                }
            }
            onAccepted: {
                foot.pressed(Qt.ShortcutFocusReason);
                foot.compose.send();
            }
            // No binding: it would put the text back while a letter is on its way into it.
            Component.onCompleted: text = foot.compose.note
        }
        Caption {
            width: parent.width
            text: foot.compose.noteWarning
            color: Theme.tertiary
            font.pixelSize: Theme.badgeSize
            maximumLineCount: 4
            wrapMode: Text.Wrap
        }
        ErrorText {
            width: parent.width
            text: foot.compose.error
        }
        Item {
            width: parent.width
            height: 36

            AppButton {
                id: cancel
                height: parent.height
                text: foot.compose.cancelLabel
                onClicked: {
                    foot.pressed(foot.reasonOf(cancel));
                    foot.compose.cancel();
                }
            }
            AppButton {
                id: send
                x: cancel.width + 8
                width: parent.width - x
                height: parent.height
                kind: AppButton.Primary
                symbol: "paperplane.fill"
                enabled: foot.compose.canSend
                text: foot.compose.sendLabel
                onClicked: {
                    foot.pressed(foot.reasonOf(send));
                    foot.compose.send();
                }
            }
            Spinner {
                anchors.right: send.right
                anchors.rightMargin: 14
                anchors.verticalCenter: send.verticalCenter
                visible: foot.compose.sending
                tint: Theme.ink
                Accessible.role: Accessible.Indicator
                Accessible.name: qsTr("Sending…")
            }
        }
    }
}
