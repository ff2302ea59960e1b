pragma ComponentBehavior: Bound

import QtQuick
import ZelkoVanta.Screens

/// A queue. Its clock runs only while somebody can see a row.
ListView {
    id: list

    required property QueueModel rows
    required property string label
    required property bool inSight
    /// Kept free below the last row, for what floats above it.
    property real room: 0

    readonly property bool running: inSight && visible && rows.count > 0

    /// The row in which the keyboard is, and the place of such a row that has just gone; -1 for none.
    property int enteredRow: -1
    property int vacated: -1
    /// By mouse or by key: only a key shows where it is.
    property int cameBy: Qt.OtherFocusReason

    /// The signal whose row was scrolled away with the keyboard in it, and where that row stood. The list has the
    /// keyboard then, so that no key presses what nobody sees.
    property string leftId: ""
    property int leftAt: -1

    /// Where the arrows and the tab key go on from while the list itself has the keyboard.
    function placeLeft(): int {
        const at = list.rows.placeOf(list.leftId);
        return Math.max(0, Math.min(list.count - 1, at >= 0 ? at : list.leftAt));
    }

    /// Takes the keyboard to the first button of the row that was left, or to what comes before it.
    function tabOn(forward) {
        const to = forward ? list.placeLeft() : list.placeLeft() - 1;
        list.positionViewAtIndex(Math.max(0, to), ListView.Contain);
        // Rows that have just come are not yet in their order for the tab key.
        const row = list.itemAtIndex(to) as QueueRow;
        const next = forward ? (row ?? list).nextItemInFocusChain() : row?.lastButton() ?? list.nextItemInFocusChain(false);
        next?.forceActiveFocus(forward ? Qt.TabFocusReason : Qt.BacktabFocusReason);
    }

    /// Takes the keyboard to the row that stands where one has gone, unless it is wanted elsewhere by now.
    function followUp() {
        const to = list.vacated;
        list.vacated = -1;
        if (to < 0 || !list.visible || !list.activeFocus) {
            return;
        }
        if (list.count > 0) {
            list.step(to, 0, list.cameBy);
        } else {
            list.nextItemInFocusChain()?.forceActiveFocus(list.cameBy);
        }
    }

    /// How the keyboard came to where it is.
    function lastReason(): int {
        return (list.Window.activeFocusItem as Press)?.focusReason ?? Qt.OtherFocusReason;
    }

    /// Takes the keyboard to the row above or below, to the first button that it has.
    function step(from: int, by: int, reason: int) {
        const to = Math.max(0, Math.min(list.count - 1, from + by));
        list.positionViewAtIndex(to, ListView.Contain);
        list.itemAtIndex(to)?.nextItemInFocusChain()?.forceActiveFocus(reason);
    }

    clip: true
    model: rows
    reuseItems: true
    // The next row, to which the tab key goes; more would only take memory.
    cacheBuffer: 40
    boundsBehavior: Flickable.StopAtBounds
    activeFocusOnTab: false
    keyNavigationEnabled: false
    // A current row would take the focus with it when others come.
    currentIndex: -1
    bottomMargin: room

    Keys.onUpPressed: list.step(list.placeLeft(), -1, Qt.TabFocusReason)
    Keys.onDownPressed: list.step(list.placeLeft(), 1, Qt.TabFocusReason)
    Keys.onTabPressed: list.tabOn(true)
    Keys.onBacktabPressed: list.tabOn(false)

    Accessible.role: Accessible.List
    Accessible.name: label

    AppScrollBar {
        id: bar
        of: list
    }

    delegate: QueueRow {
        id: entry

        required property int index
        readonly property bool hasKeyboard: activeFocus

        width: list.width - (bar.visible ? 12 : 0)
        rows: list.rows

        onYChanged: order.schedule()
        // The keyboard never goes where nobody looks. What is being pressed stays under the pointer.
        onEntered: reason => {
            if (reason !== Qt.MouseFocusReason)
                list.positionViewAtIndex(entry.index, ListView.Contain);
        }
        onHasKeyboardChanged: {
            if (hasKeyboard) {
                list.enteredRow = entry.index;
                list.leftId = "";
            } else if (list.enteredRow === entry.index) {
                list.enteredRow = -1;
            }
        }
        onIndexChanged: if (hasKeyboard && index >= 0)
            list.enteredRow = index
        Keys.onUpPressed: list.step(entry.index, -1, Qt.TabFocusReason)
        Keys.onDownPressed: list.step(entry.index, 1, Qt.TabFocusReason)
        ListView.onRemove: if (hasKeyboard) {
            list.vacated = list.enteredRow;
            list.cameBy = list.lastReason();
            Qt.callLater(list.followUp); // qmllint disable type
        }
        // A row that waits for its next use is none for a screen reader, and none for the keyboard, not even for one
        // that is in another window now.
        ListView.onPooled: {
            if (entry.focus) {
                list.leftId = entry.signalId;
                list.leftAt = entry.index;
                entry.focus = false;
            }
            entry.visible = false;
        }
        ListView.onReused: entry.visible = true
    }

    ReadingOrder {
        id: order
        of: list.contentItem
    }

    // Aligned to the moment at which the list came in sight, however late a tick is.
    Timer {
        interval: 1000
        repeat: true
        triggeredOnStart: true
        running: list.running
        onRunningChanged: if (running)
            list.rows.appear()
        onTriggered: interval = list.rows.tick()
    }

    EmptyQueueLabel {
        width: list.width
        visible: list.rows.count === 0
        systemImage: list.rows.emptySymbol
        title: list.rows.emptyTitle
        subtitle: list.rows.emptySubtitle
    }
}
