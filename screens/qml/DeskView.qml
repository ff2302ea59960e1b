import QtQuick
import ZelkoVanta.Screens

/// A paired computer: who it is, how it is connected, its queues, and the way to a form. What not every computer shows
/// is made where it is shown, and no library of layouts is needed for what stands one below the other.
Item {
    id: desk

    required property PageModel page
    required property bool inSight

    readonly property real inner: width - 2 * Theme.margin

    /// A form is wanted, by mouse or by key.
    signal composeAsked(int reason)

    /// The keyboard is back from a form.
    function comeBack(reason: int) {
        fab.forceActiveFocus(reason);
    }

    Column {
        id: top

        width: parent.width

        Item {
            width: parent.width
            height: Theme.margin + Math.max(names.height, status.height) + 6

            Column {
                id: names
                x: Theme.margin
                y: Theme.margin + (parent.height - Theme.margin - 6 - height) / 2
                width: desk.inner - (status.active ? status.width + 8 : 0)
                spacing: 2

                Words {
                    width: parent.width
                    height: Math.ceil(implicitHeight)
                    text: desk.page.title
                    font.pixelSize: Theme.titleSize
                    font.weight: Font.DemiBold
                    Accessible.role: Accessible.Heading
                }
                Caption {
                    width: parent.width
                    height: Math.ceil(implicitHeight)
                    text: desk.page.subtitle
                }
            }
            Loader {
                id: status
                x: parent.width - Theme.margin - width
                y: Theme.margin + (parent.height - Theme.margin - 6 - height) / 2
                active: desk.page.queue.hasStatus
                Component.onCompleted: setSource("MemberStatusControl.qml", {
                    screen: desk.page.queue
                })
            }
        }
        ConnectionBanner {
            x: Theme.margin
            width: desk.inner
            text: desk.page.queue.bannerText
            spins: desk.page.queue.bannerSpins
            inSight: desk.inSight && desk.visible
        }
        Item {
            width: parent.width
            height: Theme.margin + signOut.height
            visible: desk.page.signedIn !== ""

            Caption {
                x: Theme.margin
                width: signOut.x - 8 - x
                anchors.verticalCenter: signOut.verticalCenter
                text: desk.page.signedIn
                font.pixelSize: Theme.textSize
            }
            AppButton {
                id: signOut
                x: parent.width - Theme.margin - width
                y: Theme.margin
                text: qsTr("Sign out")
                onClicked: desk.page.signOut()
            }
        }
        Item {
            width: parent.width
            height: Theme.margin + station.height
            visible: station.active

            Loader {
                id: station
                x: Theme.margin
                y: Theme.margin
                width: desk.inner
                active: desk.page.asksForRoom
                Component.onCompleted: setSource("RoomChoice.qml", {
                    page: desk.page
                })
            }
        }
        Item {
            width: parent.width
            height: Theme.margin + hint.height
            visible: hint.text !== ""

            Caption {
                id: hint
                x: Theme.margin
                y: Theme.margin
                width: desk.inner
                height: Math.ceil(implicitHeight)
                text: desk.page.hint
                font.pixelSize: Theme.textSize
                maximumLineCount: 3
                wrapMode: Text.Wrap
            }
        }
    }
    Loader {
        id: signIn

        y: top.height
        width: parent.width
        height: bottom.y - y
        active: desk.page.asksForSignIn
        Component.onCompleted: setSource("SignInView.qml", {
            page: desk.page
        })

        Binding {
            target: signIn.item
            property: "inSight"
            value: desk.inSight && desk.visible
        }
    }
    QueueLists {
        x: Theme.margin
        y: top.height + Theme.margin
        width: desk.inner
        height: Math.max(0, bottom.y - y)
        visible: !desk.page.asksForSignIn
        screen: desk.page.queue
        showsReceived: desk.page.showsReceived
        showsSent: desk.page.showsSent
        inSight: desk.inSight && desk.visible
        room: 72

        ComposeFab {
            id: fab
            x: parent.width - width - 16 + Theme.margin
            y: parent.height - height - 16
            visible: desk.page.canSend
            onClicked: desk.composeAsked(visualFocus ? Qt.ShortcutFocusReason : Qt.OtherFocusReason)
        }
    }
    Column {
        id: bottom

        y: parent.height - height
        width: parent.width

        Item {
            width: parent.width
            height: error.height + 8
            visible: error.text !== ""

            ErrorText {
                id: error
                x: Theme.margin
                width: desk.inner
                text: desk.page.error
                maximumLineCount: 3
            }
        }
        UnlinkCorner {
            width: parent.width
            page: desk.page
        }
    }
}
