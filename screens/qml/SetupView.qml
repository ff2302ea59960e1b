import QtQuick
import ZelkoVanta.Screens

/// A computer that belongs to no office yet: a code to be scanned, and a field for one to be typed.
Flickable {
    id: setup

    required property PageModel page
    property bool inSight: false

    contentHeight: content.height + 2 * content.y
    clip: true
    boundsBehavior: Flickable.StopAtBounds
    AppScrollBar {
        of: setup
    }

    Column {
        id: content

        x: (setup.width - width) / 2
        y: Math.max(20, (setup.height - height) / 2)
        width: Math.min(setup.width - 40, 380)
        spacing: 12

        Words {
            width: parent.width
            height: Math.ceil(implicitHeight)
            text: qsTr("Set up this computer")
            font.pixelSize: Theme.titleSize
            font.weight: Font.DemiBold
            horizontalAlignment: Text.AlignHCenter
            maximumLineCount: 3
            wrapMode: Text.Wrap
            Accessible.role: Accessible.Heading
        }
        ErrorText {
            width: parent.width
            text: setup.page.setupNotice
            horizontalAlignment: Text.AlignHCenter
        }
        QrCodeCard {
            width: parent.width
            spokenName: qsTr("Setup code")
            file: setup.page.setupImage
            hasImage: setup.page.hasSetupImage
            inSight: setup.inSight && setup.visible
            placeholder: setup.page.setupPlaceholder
            illegibleText: qsTr("The code can't be shown. Type a pairing code instead.")
            caption: qsTr("Scan with the ZelkoVanta app, or type a pairing code from the web admin.")
        }
        ErrorText {
            width: parent.width
            text: setup.page.setupError
            horizontalAlignment: Text.AlignHCenter
        }
        Item {
            width: parent.width
            height: code.height

            AppField {
                id: code
                width: pair.x - 8
                label: qsTr("Pairing code")
                placeholderText: "XXXX-XXXX"
                // Also what a screen reader writes, which is not told as typed.
                onTextChanged: {
                    if (code.text !== setup.page.pairingCode) {
                        const cursor = setup.page.pairingCodeCursor(code.text.slice(0, code.cursorPosition));
                        setup.page.typePairingCode(code.text);
                        code.cursorPosition = cursor;
                    }
                }
                onAccepted: setup.page.pair()
            }
            AppButton {
                id: pair
                x: parent.width - width
                height: code.height
                kind: AppButton.Primary
                enabled: setup.page.mayPair
                text: setup.page.pairing ? qsTr("Pairing…") : qsTr("Pair device")
                onClicked: setup.page.pair()
            }
        }
        ErrorText {
            width: parent.width
            text: setup.page.pairingError
            font.pixelSize: Theme.captionSize
        }
    }

    Connections {
        target: setup.page
        function onPairingFormChanged() {
            if (code.text !== setup.page.pairingCode) {
                code.text = setup.page.pairingCode;
            }
        }
    }
}
