import QtQuick
import ZelkoVanta.Screens

/// Below the people of a form, always in sight: what will happen, the note, and the way out.
Rectangle {
    id: foot

    required property ComposeModel compose

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
            text: foot.compose.note
            // Also what a screen reader writes, which is not told as typed. The form keeps only so much of it.
            onTextChanged: {
                if (text !== foot.compose.note) {
                    foot.compose.editNote(text);
                    if (text !== foot.compose.note) {
                        const cursor = cursorPosition;
                        text = foot.compose.note;
                        cursorPosition = Math.min(cursor, length);
                    }
                }
            }
            onAccepted: foot.compose.send()
        }
        Caption {
            width: parent.width
            text: foot.compose.noteWarning
            color: Theme.tertiary
            font.pixelSize: Theme.badgeSize
            maximumLineCount: 4
            wrapMode: Text.Wrap
        }
        Caption {
            width: parent.width
            text: foot.compose.error
            color: Theme.red
            font.pixelSize: Theme.textSize
            maximumLineCount: 4
            wrapMode: Text.Wrap
            Accessible.role: Accessible.AlertMessage
        }
        Item {
            width: parent.width
            height: 36

            AppButton {
                id: cancel
                height: parent.height
                text: foot.compose.cancelLabel
                onClicked: foot.compose.cancel()
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
                onClicked: foot.compose.send()
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
