pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import ZelkoVanta.Screens

/// One of several entries. The choice is kept by its id when the entries change; an entry that is gone gives way to the
/// first, or to none where a prompt asks for one.
T.ComboBox {
    id: control

    required property string label
    required property ChoiceModel choices
    /// Shown while nothing is chosen. Without it something always is.
    property string prompt: ""
    property string selectedId: ""
    property real popupWidth: width
    readonly property string shownText: currentIndex < 0 ? prompt : displayText

    /// A person chose this entry.
    signal chosen(string choiceId)

    function follow() {
        const found = control.choices.indexOf(control.selectedId);
        const fallback = control.prompt === "" && control.count > 0 ? 0 : -1;
        control.currentIndex = found >= 0 ? found : fallback;
        control.selectedId = control.choices.idAt(control.currentIndex);
    }

    /// Shows what was chosen elsewhere.
    function show(choiceId: string) {
        control.selectedId = choiceId;
        control.follow();
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

    onActivated: index => {
        control.selectedId = control.choices.idAt(index);
        control.chosen(control.selectedId);
    }
    Component.onCompleted: follow()

    Connections {
        target: control.choices
        function onChoicesReplaced() {
            control.follow();
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
