pragma ComponentBehavior: Bound

import QtQuick
import ZelkoVanta.Screens

/// Where from, what, and for whom: the scrolling part of the form. Only the rows in sight are made, however many people
/// an office has. The keyboard goes through them with the arrows, and past all of them with Tab.
ListView {
    id: list

    required property ComposeModel compose

    /// Somebody has scrolled; until then the beginning is in sight.
    property bool moved: false
    readonly property bool choosesRoom: head.choosesRoom

    function step(by: int) {
        list.moved = true;
        const to = list.currentIndex + by;
        if (to >= 0 && to < list.count) {
            list.positionViewAtIndex(to, ListView.Contain);
            // The keyboard first: a row that has it cannot cease to be the one that Tab finds.
            list.itemAtIndex(to)?.forceActiveFocus(Qt.TabFocusReason);
            list.currentIndex = to;
        }
    }

    /// The row with the keyboard is gone: whoever stands there now has it.
    function keepKeyboard() {
        const next = list.currentItem ?? list.nextItemInFocusChain(true);
        next.forceActiveFocus(Qt.TabFocusReason);
    }

    clip: true
    model: compose.who
    boundsBehavior: Flickable.StopAtBounds
    activeFocusOnTab: false
    keyNavigationEnabled: false
    currentIndex: 0
    highlightFollowsCurrentItem: false
    spacing: 6
    bottomMargin: 10

    Accessible.role: Accessible.List
    Accessible.name: compose.whoTitle

    AppScrollBar {
        of: list
    }

    // Above the first row, and scrolled with it. A header of the list's own could not see this form.
    topMargin: head.height

    ComposeHead {
        id: head

        parent: list.contentItem
        y: -height
        width: list.width
        compose: list.compose
        onEntered: (top, bottom) => {
            if (list.contentY > y + top) {
                list.contentY = y + top;
            } else if (list.contentY + list.height < y + bottom) {
                list.contentY = y + bottom - list.height;
            }
        }
        onHeightChanged: if (!list.moved)
            list.contentY = -height
    }
    onMovementStarted: moved = true

    delegate: WhoRow {
        id: entry

        required property int index

        x: Theme.margin
        width: list.width - 2 * Theme.margin
        // Where the keyboard is can be left and come back to, even while the list is told of other rows.
        activeFocusOnTab: ListView.isCurrentItem || activeFocus

        onYChanged: order.schedule()
        onPicked: {
            list.currentIndex = entry.index;
            list.compose.pressWho(entry.index);
        }
        onActiveFocusChanged: if (activeFocus) {
            list.currentIndex = entry.index;
            list.positionViewAtIndex(entry.index, ListView.Contain);
        }
        Keys.onUpPressed: list.step(-1)
        Keys.onDownPressed: list.step(1)
    }

    Connections {
        target: list.model
        function onRowsAboutToBeRemoved(parent: var, first: int, last: int) {
            const hasKeyboard = list.currentItem?.activeFocus ?? false;
            if (hasKeyboard && first <= list.currentIndex && list.currentIndex <= last) {
                Qt.callLater(list.keepKeyboard);
            }
        }
    }
    ReadingOrder {
        id: order
        of: list.contentItem
    }
}
