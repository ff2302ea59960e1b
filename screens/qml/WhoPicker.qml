pragma ComponentBehavior: Bound

import QtQuick
import ZelkoVanta.Screens

/// Where from, what, and for whom: the scrolling part of the form. Only the rows in sight are made, however many people
/// an office has. The keyboard goes through them with the arrows, and past all of them with Tab.
ListView {
    id: list

    required property ComposeModel compose

    readonly property bool choosesRoom: head.choosesRoom

    /// How the keyboard came to a row that has just gone.
    property int cameBy: Qt.OtherFocusReason

    function step(by: int) {
        const to = list.currentIndex + by;
        if (to >= 0 && to < list.count) {
            list.positionViewAtIndex(to, ListView.Contain);
            // The keyboard first: a row that has it cannot cease to be the one that Tab finds.
            list.itemAtIndex(to)?.forceActiveFocus(Qt.TabFocusReason);
            list.currentIndex = to;
        }
    }

    /// The row with the keyboard is gone: whoever stands there now has it, unless it is wanted elsewhere by now.
    function keepKeyboard() {
        list.forceLayout();
        if (!list.activeFocus) {
            return;
        }
        const next = list.currentItem ?? list.nextItemInFocusChain(true);
        // The list has handed the keyboard on, but not the way in which it came.
        if (next?.activeFocus) {
            next.focus = false;
        }
        next?.forceActiveFocus(list.cameBy);
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

    // The people alone, and not what is scrolled with them.
    Component.onCompleted: {
        contentItem.Accessible.role = Accessible.List;
        contentItem.Accessible.name = Qt.binding(() => list.compose.whoTitle);
    }

    AppScrollBar {
        of: list
    }

    // Above the first row, and scrolled with it. A header of the list's own could not see this form.
    topMargin: head.height

    ComposeHead {
        id: head

        property real lastHeight: 0

        parent: list
        y: -list.contentY - height
        width: list.width
        compose: list.compose
        onEntered: (top, bottom) => {
            if (y + top < 0) {
                list.contentY += y + top;
            } else if (y + bottom > list.height) {
                list.contentY += y + bottom - list.height;
            }
        }
        // What was in sight from its beginning stays so.
        onHeightChanged: {
            if (list.contentY <= -lastHeight) {
                list.contentY = -height;
            }
            lastHeight = height;
        }
    }

    delegate: WhoRow {
        id: entry

        required property int index

        x: Theme.margin
        width: list.width - 2 * Theme.margin
        // Where the keyboard is can be left and come back to, even while the list is told of other rows.
        activeFocusOnTab: ListView.isCurrentItem || activeFocus

        onYChanged: order.schedule()
        onClicked: {
            list.currentIndex = entry.index;
            list.compose.pressWho(entry.index);
        }
        onActiveFocusChanged: if (activeFocus)
            list.currentIndex = entry.index
        // What is pressed with the mouse must not move away below it.
        onEntered: reason => {
            if (reason !== Qt.MouseFocusReason)
                list.positionViewAtIndex(entry.index, ListView.Contain);
        }
        Keys.onUpPressed: list.step(-1)
        Keys.onDownPressed: list.step(1)
    }

    Connections {
        target: list.model
        function onRowsAboutToBeRemoved(parent: var, first: int, last: int) {
            const leaving = list.currentItem as WhoRow;
            if (leaving?.activeFocus && first <= list.currentIndex && list.currentIndex <= last) {
                list.cameBy = leaving.focusReason;
                Qt.callLater(list.keepKeyboard); // qmllint disable type
            }
        }
    }
    ReadingOrder {
        id: order
        of: list.contentItem
    }
    ReadingOrder {
        of: list
    }
}
