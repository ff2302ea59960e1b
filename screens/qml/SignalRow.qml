pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import ZelkoVanta.Screens

/// One signal: where, what, who, how long, and what can be done about it.
Item {
    id: row

    required property PageModel page
    required property double now

    required property string signalId
    required property string room
    required property string type
    required property string typeColor
    required property string detail
    required property string note
    required property string status
    required property string statusText
    required property double since
    required property bool mayAcknowledge
    required property bool mayFinish
    required property bool mayCancel

    implicitHeight: card.implicitHeight + 8

    Accessible.role: Accessible.ListItem
    Accessible.name: room + ", " + type + ", " + statusText

    Rectangle {
        id: card

        anchors.left: parent.left
        anchors.right: parent.right
        implicitHeight: content.implicitHeight + 20
        radius: 13
        color: Theme.card
        border.width: 1
        border.color: Theme.hairline

        ColumnLayout {
            id: content

            anchors.fill: parent
            anchors.leftMargin: Theme.margin
            anchors.rightMargin: Theme.margin
            anchors.topMargin: 10
            anchors.bottomMargin: 10
            spacing: 4

            RowLayout {
                spacing: 10

                Rectangle {
                    implicitWidth: 12
                    implicitHeight: 12
                    radius: 6
                    color: row.typeColor
                    border.width: 1
                    border.color: Theme.hairline
                }
                Words {
                    Layout.fillWidth: true
                    Layout.maximumWidth: Math.ceil(implicitWidth) + 1
                    Layout.minimumWidth: 40
                    text: row.room
                    font.weight: Font.DemiBold
                }
                Words {
                    Layout.fillWidth: true
                    Layout.minimumWidth: 40
                    text: row.type
                    color: Theme.secondary
                }
                WaitTimer {
                    page: row.page
                    since: row.since
                    now: row.now
                }
            }
            Caption {
                Layout.fillWidth: true
                Layout.leftMargin: 22
                text: row.detail
            }
            Caption {
                Layout.fillWidth: true
                Layout.leftMargin: 22
                text: row.note
                color: Theme.primary
                maximumLineCount: 2
                wrapMode: Text.Wrap
            }
            RowLayout {
                Layout.topMargin: 4
                Layout.leftMargin: 22
                spacing: 8

                StatusChip {
                    status: row.status
                    text: row.statusText
                }
                Item {
                    Layout.fillWidth: true
                }
                AppButton {
                    visible: row.mayAcknowledge
                    kind: AppButton.Act
                    text: qsTr("On my way")
                    onClicked: row.page.acknowledge(row.signalId)
                }
                AppButton {
                    visible: row.mayFinish
                    kind: AppButton.Finish
                    text: qsTr("Done")
                    onClicked: row.page.finish(row.signalId)
                }
                AppButton {
                    visible: row.mayCancel
                    kind: AppButton.Warn
                    text: qsTr("Cancel")
                    onClicked: row.page.cancel(row.signalId)
                }
            }
        }
    }
}
