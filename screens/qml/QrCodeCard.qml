import QtQuick
import ZelkoVanta.Screens

/// A code for a phone's camera on a card that is white whatever the appearance, and what belongs to it below. While
/// there is no code that can be shown, something is seen to go on.
Column {
    id: card

    required property string spokenName
    required property bool hasImage
    property alias file: image.file
    /// Whether somebody may be looking; nothing moves otherwise.
    required property bool inSight
    /// The codes of the office fill it in whole pixels at every quarter of a scale.
    property real side: 180
    /// Shown, but not to be relied on.
    property bool faded: false
    /// In place of the code: without an image, and with one that cannot be drawn.
    property string placeholder: ""
    property string illegibleText: ""
    property string caption: ""
    /// When the code gives way to another one.
    property string expiresAt: ""
    /// The words that say so; they are due anew with each `ticked`.
    property string countdown: ""

    readonly property bool showsCode: hasImage && image.legible

    signal ticked

    spacing: 8

    onExpiresAtChanged: ticked()
    Component.onCompleted: ticked()

    Timer {
        interval: 1000
        running: card.inSight && card.visible && card.expiresAt !== ""
        repeat: true
        triggeredOnStart: true
        onTriggered: card.ticked()
    }
    Rectangle {
        anchors.horizontalCenter: parent.horizontalCenter
        width: card.side + 20
        height: width
        radius: Theme.radius
        color: Theme.white
        border.width: 1
        border.color: Theme.hairline

        CodeImage {
            id: image
            x: 10
            y: 10
            width: card.side
            height: card.side
            opacity: card.faded ? 0.25 : 1
            visible: card.showsCode
            Accessible.role: Accessible.Graphic
            Accessible.name: card.spokenName
        }
        Column {
            anchors.verticalCenter: parent.verticalCenter
            x: 16
            width: parent.width - 32
            spacing: 12
            visible: !card.showsCode

            Spinner {
                anchors.horizontalCenter: parent.horizontalCenter
                side: 28
                running: card.inSight
                tint: Theme.stone
            }
            Words {
                width: parent.width
                visible: text !== ""
                text: card.hasImage ? card.illegibleText : card.placeholder
                color: Theme.ink
                horizontalAlignment: Text.AlignHCenter
                maximumLineCount: 5
                wrapMode: Text.Wrap
            }
        }
    }
    Caption {
        width: card.width
        text: card.caption
        horizontalAlignment: Text.AlignHCenter
        maximumLineCount: 3
        wrapMode: Text.Wrap
    }
    Digits {
        anchors.horizontalCenter: parent.horizontalCenter
        visible: text !== ""
        text: card.countdown
        color: Theme.tertiary
        font.pixelSize: Theme.captionSize
    }
}
