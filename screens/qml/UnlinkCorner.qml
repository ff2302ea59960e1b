import QtQuick
import ZelkoVanta.Screens

/// Takes this computer out of its office: a press, and a second one to mean it.
Rectangle {
    id: corner

    required property PageModel page

    implicitHeight: 30
    color: Theme.band

    AppButton {
        anchors.right: parent.right
        anchors.rightMargin: Theme.margin
        implicitHeight: 24
        kind: corner.page.asksToUnlink ? AppButton.Warn : AppButton.Plain
        text: corner.page.asksToUnlink ? qsTr("Press again to unlink") : qsTr("Unlink this computer")
        onClicked: corner.page.pressUnlink()
    }
}
