import QtQuick
import ZelkoVanta.Screens

/// A computer at which somebody has to sign in first: a code to be scanned, which changes by itself.
Flickable {
    id: view

    required property PageModel page
    property bool inSight: false

    readonly property bool lookedAt: visible && inSight && page.asksForSignIn

    onLookedAtChanged: page.lookAtSignInCode(lookedAt)
    Component.onCompleted: page.lookAtSignInCode(lookedAt)
    Component.onDestruction: page.lookAtSignInCode(false)

    contentHeight: content.height + 2 * content.y
    clip: true
    boundsBehavior: Flickable.StopAtBounds
    AppScrollBar {
        of: view
    }

    Column {
        id: content

        x: (view.width - width) / 2
        y: Math.max(12, (view.height - height) / 2)
        width: Math.min(view.width - 40, 360)
        spacing: 12

        Words {
            width: parent.width
            height: Math.ceil(implicitHeight)
            text: view.page.signInHeading
            font.pixelSize: Theme.titleSize
            font.weight: Font.DemiBold
            horizontalAlignment: Text.AlignHCenter
            maximumLineCount: 3
            wrapMode: Text.Wrap
            Accessible.role: Accessible.Heading
        }
        QrCodeCard {
            width: parent.width
            spokenName: qsTr("Sign-in code")
            file: view.page.signInImage
            hasImage: view.page.hasSignInImage
            inSight: view.lookedAt
            faded: view.page.signInError !== ""
            placeholder: view.page.signInPlaceholder
            illegibleText: qsTr("The code can't be shown.")
            caption: view.page.signInHint
            // Nothing is on its way to refresh a code that could not be had.
            expiresAt: view.page.signInError === "" ? view.page.signInExpiresAt : ""
            onTicked: countdown = view.page.codeRefreshText(expiresAt)
        }
        ErrorText {
            width: parent.width
            text: view.page.signInError
            horizontalAlignment: Text.AlignHCenter
        }
    }
}
