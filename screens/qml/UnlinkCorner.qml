import QtQuick
import ZelkoVanta.Screens

/// Takes this computer out of its office: a press, and a second one to mean it.
Rectangle {
    id: corner

    required property PageModel page

    implicitHeight: 30
    color: Theme.band

    Timer {
        id: doubt
        interval: 6000
    }

    AppButton {
        anchors.right: parent.right
        anchors.rightMargin: Theme.margin
        implicitHeight: 24
        kind: doubt.running ? AppButton.Warn : AppButton.Plain
        text: doubt.running ? qsTr("Press again to unlink") : qsTr("Unlink this computer")
        onClicked: {
            if (doubt.running) {
                doubt.stop();
                corner.page.unlink();
            } else {
                doubt.start();
            }
        }
    }
}
