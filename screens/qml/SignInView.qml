import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import ZelkoVanta.Screens

/// A computer at which somebody has to sign in first: a code to be scanned, which changes by itself.
Flickable {
    id: view

    required property PageModel page
    required property bool inSight

    readonly property bool lookedAt: visible && inSight && page.asksForSignIn
    property double now: page.now()

    onLookedAtChanged: page.lookAtSignInCode(lookedAt)
    Component.onCompleted: page.lookAtSignInCode(lookedAt)

    contentHeight: content.height + 2 * content.y
    clip: true
    boundsBehavior: Flickable.StopAtBounds
    T.ScrollBar.vertical: AppScrollBar {}

    Timer {
        interval: 1000
        running: view.lookedAt
        repeat: true
        triggeredOnStart: true
        onTriggered: view.now = view.page.now()
    }

    ColumnLayout {
        id: content

        x: (view.width - width) / 2
        y: Math.max(12, (view.height - height) / 2)
        width: Math.min(view.width - 40, 360)
        spacing: 12

        Words {
            Layout.fillWidth: true
            text: view.page.signInHeading
            font.pixelSize: Theme.titleSize
            font.weight: Font.DemiBold
            horizontalAlignment: Text.AlignHCenter
            maximumLineCount: 3
            wrapMode: Text.Wrap
            Accessible.role: Accessible.Heading
        }
        CodeCard {
            id: card

            Layout.alignment: Qt.AlignHCenter
            implicitWidth: 200
            implicitHeight: 200
            spokenName: qsTr("Sign-in code")
            file: view.page.signInImage
            hasImage: view.page.hasSignInImage
            faded: view.page.signInError !== ""
            placeholder: view.page.signInPlaceholder
            illegibleText: qsTr("The code can't be shown.")
        }
        Caption {
            Layout.fillWidth: true
            text: view.page.signInError
            color: Theme.redText
            font.pixelSize: Theme.textSize
            horizontalAlignment: Text.AlignHCenter
        }
        Caption {
            Layout.fillWidth: true
            text: view.page.signInHint
            font.pixelSize: Theme.textSize
            horizontalAlignment: Text.AlignHCenter
            maximumLineCount: 3
            wrapMode: Text.Wrap
        }
        Caption {
            Layout.fillWidth: true
            text: view.page.signInError === "" && card.showsCode ? view.page.signInCountdown(view.now) : ""
            horizontalAlignment: Text.AlignHCenter
        }
    }
}
