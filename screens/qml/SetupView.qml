import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import ZelkoVanta.Screens

/// A computer that belongs to no office yet: a code to be scanned, and a field for one to be typed.
Flickable {
    id: setup

    required property PageModel page

    function redeem() {
        if (code.length > 0 && !page.redeeming) {
            page.redeem(code.text);
        }
    }

    contentHeight: content.height + 2 * content.y
    clip: true
    boundsBehavior: Flickable.StopAtBounds
    T.ScrollBar.vertical: AppScrollBar {}

    ColumnLayout {
        id: content

        x: (setup.width - width) / 2
        y: Math.max(20, (setup.height - height) / 2)
        width: Math.min(setup.width - 40, 380)
        spacing: 12

        Words {
            Layout.alignment: Qt.AlignHCenter
            text: qsTr("Set up this computer")
            font.pixelSize: Theme.titleSize
            font.weight: Font.DemiBold
            Accessible.role: Accessible.Heading
        }
        Caption {
            Layout.fillWidth: true
            text: setup.page.setupNotice
            color: Theme.redText
            font.pixelSize: Theme.textSize
            horizontalAlignment: Text.AlignHCenter
            maximumLineCount: 4
            wrapMode: Text.Wrap
        }
        Rectangle {
            Layout.alignment: Qt.AlignHCenter
            implicitWidth: 232
            implicitHeight: 232
            radius: Theme.radius
            color: "#FFFFFF"
            border.width: 1
            border.color: Theme.hairline

            CodeImage {
                anchors.centerIn: parent
                width: 212
                height: 212
                file: setup.page.setupImage
                visible: setup.page.hasSetupImage
                Accessible.role: Accessible.Graphic
                Accessible.name: qsTr("Setup code")
            }
            Words {
                anchors.centerIn: parent
                visible: !setup.page.hasSetupImage && setup.page.setupError === ""
                text: qsTr("Getting a code…")
                color: "#5C5142"
            }
        }
        Caption {
            Layout.fillWidth: true
            text: setup.page.setupError
            color: Theme.redText
            font.pixelSize: Theme.textSize
            horizontalAlignment: Text.AlignHCenter
        }
        Caption {
            Layout.fillWidth: true
            text: qsTr("Scan with the ZelkoVanta app, or type a pairing code from the web admin.")
            horizontalAlignment: Text.AlignHCenter
            maximumLineCount: 3
            wrapMode: Text.Wrap
        }
        RowLayout {
            spacing: 8

            AppField {
                id: code
                Layout.fillWidth: true
                label: qsTr("Pairing code")
                placeholderText: "XXXX-XXXX"
                onTextEdited: {
                    const shown = setup.page.pairingCode(code.text);
                    if (shown !== code.text) {
                        code.text = shown;
                    }
                }
                onAccepted: setup.redeem()
            }
            AppButton {
                implicitHeight: 32
                kind: AppButton.Primary
                enabled: code.length > 0 && !setup.page.redeeming
                text: setup.page.redeeming ? qsTr("Pairing…") : qsTr("Pair device")
                onClicked: setup.redeem()
            }
        }
        Caption {
            Layout.fillWidth: true
            text: setup.page.redeemError
            color: Theme.redText
            maximumLineCount: 4
            wrapMode: Text.Wrap
        }
    }
}
