pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import ZelkoVanta.Screens

/// What a page shows in one state at a time, beside each other.
Column {
    id: shelf

    required property var samples

    spacing: 22

    GalleryPart {
        width: parent.width
        title: "Codes"
        QrCodeCard {
            side: 90
            width: 190
            spokenName: "Setup code"
            hasImage: true
            inSight: true
            file: shelf.samples.code
            caption: "Scan with the app"
            expiresAt: "soon"
            countdown: "Code refreshes in 0:42"
        }
        QrCodeCard {
            side: 90
            width: 190
            spokenName: "Faded code"
            hasImage: true
            inSight: true
            faded: true
            file: shelf.samples.code
            caption: "Reconnecting…"
        }
        QrCodeCard {
            side: 90
            width: 190
            spokenName: "Illegible code"
            hasImage: true
            inSight: true
            file: "none"
            illegibleText: "The code can't be shown."
        }
        QrCodeCard {
            side: 90
            width: 190
            spokenName: "Absent code"
            hasImage: false
            inSight: true
            placeholder: "Getting a code…"
        }
    }
    GalleryPart {
        width: parent.width
        title: "Tabs and status"
        QueueTabToggle {
            width: 250
            screen: shelf.samples.page.queue
        }
        MemberStatusControl {
            screen: shelf.samples.page.queue
        }
        Repeater {
            model: ["page", "accent", "band"]

            Rectangle {
                id: ground

                required property string modelData

                width: 4 * 90
                height: 28
                color: Theme[modelData]

                Row {
                    anchors.verticalCenter: parent.verticalCenter

                    Repeater {
                        model: shelf.samples.dots(ground.modelData === "accent")

                        Item {
                            id: pill

                            required property var modelData

                            width: 90
                            height: 20

                            StatusDot {
                                y: 6
                                tint: pill.modelData
                            }
                            StatusPillLabel {
                                x: 20
                                dot: pill.modelData
                                text: "Status"
                                chevron: ground.modelData === "page"
                            }
                        }
                    }
                }
            }
        }
    }
    GalleryPart {
        width: parent.width
        title: "Kinds of signal"
        FlowLayout {
            id: flow

            width: 400
            height: implicitHeight
            spacing: 8
            lineSpacing: 8

            Repeater {
                model: shelf.samples.page.compose.types

                TypeChoice {
                    required property string typeId

                    widest: flow.width
                    onClicked: shelf.samples.page.compose.chooseType(typeId)
                }
            }
        }
    }
    GalleryPart {
        width: parent.width
        title: "People to send to"
        ListView {
            id: people

            width: 400
            height: 230
            clip: true
            spacing: 6
            model: shelf.samples.page.compose.who
            AppScrollBar {
                of: people
            }

            delegate: WhoRow {
                required property int index

                width: people.width - 12
                onClicked: shelf.samples.page.compose.pressWho(index)
            }
        }
        PickRowFace {
            width: 190
            height: 40
            chosen: false
            down: true
            ringed: false
            tint: Theme.blueText

            Words {
                x: 10
                height: parent.height
                verticalAlignment: Text.AlignVCenter
                text: "Pressed down"
            }
        }
        PickRow {
            width: 190
            spokenName: "Chosen"
            checked: true
            edge: Theme.blueText
            contentItem: Words {
                verticalAlignment: Text.AlignVCenter
                text: "Chosen"
            }
        }
    }
    GalleryPart {
        width: parent.width
        title: "Digits, errors and tips"
        Digits {
            text: "1:11:11"
        }
        Digits {
            text: "0:00:00"
        }
        ErrorText {
            text: "The office refused this."
        }
        Caption {
            width: 400
            text: "Professor Dr. Maximiliane-Alexandra von Hohenstein-Wetterburg zu Oberlangenau, ד״ר אבישג בן־דוד־לוי"
        }
        Item {
            width: 120
            height: 60

            Tip {
                text: "Send a request"
                visible: true
                delay: 0
                y: 10
                closePolicy: T.Popup.NoAutoClose
            }
        }
        Item {
            width: 90
            height: 60

            Rectangle {
                x: 10
                y: 10
                width: 70
                height: 30
                radius: 15
                color: Theme.accent

                FocusRing {
                    shown: true
                }
            }
        }
        UnlinkCorner {
            width: 260
            page: shelf.samples.page
        }
    }
}
