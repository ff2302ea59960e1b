pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import ZelkoVanta.Screens

/// One of several entries, or none yet. Which one is said from outside, by its id; a person who takes another only asks
/// for it.
T.ComboBox {
    id: control

    required property string label
    required property ChoiceModel choices
    /// Shown while none of the entries is chosen.
    required property string prompt
    property string chosenId: ""
    property real popupWidth: width
    readonly property string shownText: currentIndex < 0 ? prompt : displayText

    /// A person takes this entry.
    signal chosen(string choiceId)
    /// The keyboard arrives, in this way; not when it only comes back with its window or from the opened list.
    signal entered(int reason)

    function follow() {
        control.currentIndex = control.choices.indexOf(control.chosenId);
    }

    /// The entry of the opened list that is looked at, wherever it stands now.
    function lookAt(choiceId: string) {
        const to = control.choices.indexOf(choiceId);
        const way = to >= 0 ? to - control.highlightedIndex : 0;
        for (let step = 0; step < Math.abs(way); ++step) {
            if (way > 0) {
                control.incrementCurrentIndex();
            } else {
                control.decrementCurrentIndex();
            }
        }
    }

    model: choices
    textRole: "name"
    implicitHeight: 32
    leftPadding: 10
    rightPadding: 26
    focusPolicy: Qt.StrongFocus
    opacity: enabled ? 1 : 0.45

    Accessible.role: Accessible.ComboBox
    Accessible.name: label + ": " + shownText
    Accessible.onPressAction: popup.open()

    // A choice is an entry of the opened list that somebody takes. While the list is closed, a key opens it or does nothing.
    Keys.onPressed: event => {
        if (control.popup.visible) {
            event.accepted = false;
        } else if (event.key === Qt.Key_Up || event.key === Qt.Key_Down) {
            control.popup.open();
            event.accepted = true;
        } else {
            event.accepted = event.key === Qt.Key_Home || event.key === Qt.Key_End || event.text > " ";
        }
    }

    onActiveFocusChanged: if (activeFocus && focusReason !== Qt.ActiveWindowFocusReason && focusReason !== Qt.PopupFocusReason)
        entered(focusReason)
    onActivated: index => {
        control.chosen(control.choices.idAt(index));
        control.follow();
    }
    onChosenIdChanged: if (choices)
        follow()
    Component.onCompleted: follow()

    Connections {
        id: changes

        property string lookedAt: ""

        target: control.model
        function onChoicesAboutToChange() {
            changes.lookedAt = control.choices.idAt(control.highlightedIndex);
        }
        function onChoicesChanged() {
            control.follow();
            if (control.popup.visible) {
                control.lookAt(changes.lookedAt);
            }
        }
    }

    contentItem: Text {
        text: control.shownText
        textFormat: Text.PlainText
        color: control.currentIndex < 0 ? Theme.tertiary : Theme.primary
        elide: Text.ElideRight
        font.pixelSize: Theme.textSize
        horizontalAlignment: Text.AlignLeft
        verticalAlignment: Text.AlignVCenter
        Accessible.ignored: true
    }

    indicator: SymbolIcon {
        x: control.width - width - 10
        anchors.verticalCenter: parent?.verticalCenter
        width: 12
        height: 12
        symbol: "chevron.up.chevron.down"
        color: Theme.tertiary
    }

    background: Rectangle {
        radius: Theme.radius
        color: Theme.card
        border.width: control.visualFocus ? 2 : 1
        border.color: control.visualFocus ? Theme.focusRing : Theme.hairline
    }

    delegate: T.ItemDelegate {
        id: entry

        required property int index
        required property string name

        width: ListView.view?.width ?? 0
        implicitHeight: 32
        leftPadding: 10
        rightPadding: 30
        text: name
        highlighted: control.highlightedIndex === index
        focusPolicy: Qt.StrongFocus

        Accessible.name: name
        Accessible.onPressAction: clicked()

        contentItem: Text {
            text: entry.text
            textFormat: Text.PlainText
            color: entry.highlighted ? Theme.ink : Theme.primary
            elide: Text.ElideRight
            font.pixelSize: Theme.textSize
            horizontalAlignment: Text.AlignLeft
            verticalAlignment: Text.AlignVCenter
            Accessible.ignored: true
        }
        background: Rectangle {
            color: entry.highlighted ? Theme.accent : "transparent"

            SymbolIcon {
                x: parent.width - width - 10
                anchors.verticalCenter: parent.verticalCenter
                width: 12
                height: 12
                visible: control.currentIndex === entry.index
                symbol: "checkmark"
                color: entry.highlighted ? Theme.ink : Theme.primary
            }
        }
    }

    popup: T.Popup {
        y: control.height
        width: control.popupWidth
        height: Math.min(contentItem.implicitHeight + 2, 260)
        margins: 4
        padding: 1

        contentItem: ListView {
            id: entries

            clip: true
            implicitHeight: contentHeight
            model: control.popup.visible ? control.delegateModel : null
            currentIndex: control.highlightedIndex
            boundsBehavior: Flickable.StopAtBounds
            AppScrollBar {
                of: entries
            }

            ReadingOrder {
                of: entries.contentItem
            }
        }
        background: Rectangle {
            radius: 4
            color: Theme.card
            border.width: 1
            border.color: Theme.hairline
        }
    }
}
