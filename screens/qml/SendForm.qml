import QtQuick
import QtQuick.Layouts
import ZelkoVanta.Screens

/// A new signal: what, for whom, where from, and a few words.
Rectangle {
    id: form

    required property PageModel page

    readonly property bool ready: type.selectedId !== "" && (!page.choosesRoom || room.selectedId !== "")

    function send() {
        if (ready && !page.sending) {
            page.send(type.selectedId, recipient.selectedId, room.selectedId, note.text);
        }
    }

    implicitHeight: content.implicitHeight + 2 * Theme.margin
    color: Theme.band

    Connections {
        target: form.page
        function onSignalSent() {
            note.clear();
        }
    }

    ColumnLayout {
        id: content

        anchors.fill: parent
        anchors.margins: Theme.margin
        spacing: 8

        RowLayout {
            spacing: 8

            AppChoice {
                id: type
                Layout.fillWidth: true
                Layout.preferredWidth: 1
                label: qsTr("Signal")
                choices: form.page.types
            }
            AppChoice {
                id: recipient
                Layout.fillWidth: true
                Layout.preferredWidth: 1
                label: qsTr("For")
                choices: form.page.recipients
            }
        }
        AppChoice {
            id: room
            Layout.fillWidth: true
            visible: form.page.choosesRoom
            label: qsTr("Room")
            prompt: qsTr("Choose a room…")
            choices: form.page.rooms
        }
        RowLayout {
            spacing: 8

            AppField {
                id: note
                Layout.fillWidth: true
                label: qsTr("Note")
                placeholderText: qsTr("Short note (optional)")
                maximumLength: 200
                onAccepted: form.send()
            }
            AppButton {
                implicitHeight: 32
                kind: AppButton.Primary
                enabled: form.ready && !form.page.sending
                text: form.page.sending ? qsTr("Sending…") : qsTr("Send")
                onClicked: form.send()
            }
        }
    }
}
