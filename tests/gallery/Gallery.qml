pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import ZelkoVanta.Screens

Window {
    id: window

    required property var samples

    width: 1680
    height: 1400
    color: Theme.page
    title: "ZelkoVanta: gallery"

    Flickable {
        anchors.fill: parent
        contentWidth: states.x + states.width + 20
        contentHeight: Math.max(left.height, right.height, states.height) + 40

        Column {
            id: left

            x: 20
            y: 20
            width: 560
            spacing: 22

            GalleryPart {
                width: parent.width
                title: "Brand"
                BrandTile {}
                BrandTile {
                    size: 96
                }
                BrandMark {
                    width: 40
                    height: 48
                    color: Theme.primary
                }
                BrandWordmark {}
                BrandWordmark {
                    size: 28
                }
                IdentityTag {
                    text: "Room computer"
                }
                AppButton {
                    text: Theme.dark ? "Light" : "Dark"
                    onClicked: window.samples.setDark(!Theme.dark)
                }
            }
            GalleryPart {
                width: parent.width
                title: "Symbols"
                Repeater {
                    model: window.samples.symbols
                    Column {
                        id: entry
                        required property string modelData
                        width: 96
                        spacing: 4
                        SymbolIcon {
                            anchors.horizontalCenter: parent.horizontalCenter
                            width: 32
                            height: 32
                            symbol: entry.modelData
                            color: Theme.primary
                        }
                        Caption {
                            width: parent.width
                            font.pixelSize: 9
                            horizontalAlignment: Text.AlignHCenter
                            text: entry.modelData
                        }
                    }
                }
            }
            GalleryPart {
                width: parent.width
                title: "Buttons"
                AppButton {
                    text: "Plain"
                }
                AppButton {
                    kind: AppButton.Primary
                    symbol: "paperplane.fill"
                    text: "Primary"
                }
                AppButton {
                    kind: AppButton.Act
                    text: "Act"
                }
                AppButton {
                    kind: AppButton.Finish
                    text: "Finish"
                }
                AppButton {
                    kind: AppButton.Warn
                    text: "Warn"
                }
                AppButton {
                    kind: AppButton.Primary
                    enabled: false
                    text: "Disabled"
                }
                DesktopBackButton {}
                IconButton {
                    spokenName: "Settings"
                    symbol: "gearshape.fill"
                    tint: Theme.ink
                    fill: Theme.accent
                }
                Item {
                    width: 64
                    height: 60
                    ComposeFab {
                        anchors.centerIn: parent
                    }
                }
                Spinner {
                    side: 24
                }
            }
            GalleryPart {
                width: parent.width
                title: "Fields and choices"
                AppField {
                    width: 260
                    label: "Note"
                    placeholderText: "Short note (optional)"
                }
                AppField {
                    width: 260
                    label: "Note"
                    text: "Bring the blue folder"
                }
                AppChoice {
                    width: 260
                    label: "Room"
                    prompt: "Choose a room…"
                    choices: window.samples.choices
                }
                AppChoice {
                    width: 260
                    label: "Room"
                    prompt: "Choose a room…"
                    chosenId: "a"
                    choices: window.samples.choices
                }
                AppField {
                    width: 260
                    label: "Note"
                    enabled: false
                    opacity: 0.45
                    text: "Disabled"
                }
                AppChoice {
                    width: 260
                    label: "Room"
                    enabled: false
                    prompt: "Choose a room…"
                    chosenId: "a"
                    choices: window.samples.choices
                }
                Item {
                    width: 260
                    height: 140

                    AppChoice {
                        width: parent.width
                        label: "Open"
                        prompt: "Choose a room…"
                        chosenId: "a"
                        choices: window.samples.choices
                        popup.closePolicy: T.Popup.NoAutoClose
                        Component.onCompleted: popup.open()
                    }
                }
            }
            GalleryPart {
                width: parent.width
                title: "People"
                MemberAvatar {
                    initials: "LA"
                    disc: Qt.alpha("#12A594", 0.29)
                }
                MemberAvatar {
                    initials: "?"
                    disc: "transparent"
                }
                MemberAvatar {
                    diameter: 64
                    initials: "HV"
                    disc: Qt.alpha("#7C5CD6", 0.29)
                }
            }
            GalleryPart {
                width: parent.width
                title: "Banners and empty lists"
                ConnectionBanner {
                    width: 180
                    text: "Connecting…"
                    spins: true
                    inSight: true
                }
                ConnectionBanner {
                    width: 180
                    text: "Offline, retrying…"
                    spins: true
                    inSight: true
                }
                ConnectionBanner {
                    width: 180
                    text: "Not connected"
                    spins: false
                    inSight: true
                }
                EmptyQueueLabel {
                    width: 260
                    systemImage: "tray"
                    title: "No one is waiting for you."
                }
                EmptyQueueLabel {
                    width: 260
                    systemImage: "paperplane"
                    title: "Nothing sent yet."
                    subtitle: "Tap + to send a signal."
                }
            }
        }
        Column {
            id: right

            x: 620
            y: 20
            width: 600
            spacing: 22

            GalleryPart {
                width: parent.width
                title: "Rows"
                QueueList {
                    width: 380
                    height: contentHeight
                    cacheBuffer: 4000
                    rows: window.samples.rows
                    label: "Rows"
                    inSight: true
                }
                QueueList {
                    width: 190
                    height: 800
                    rows: window.samples.rows
                    label: "Narrow rows"
                    inSight: true
                }
            }
        }
        GalleryStates {
            id: states

            x: 1240
            y: 20
            width: 420
            samples: window.samples
        }
    }
}
