pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
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

    /// Takes the keyboard to the row above or below, to the first button that it has.
    function step(from: int, by: int) {
        const to = Math.max(0, Math.min(list.count - 1, from + by));
        list.positionViewAtIndex(to, ListView.Contain);
        list.itemAtIndex(to)?.nextItemInFocusChain()?.forceActiveFocus(Qt.TabFocusReason);
    }

    clip: true
    model: rows
    reuseItems: true
    boundsBehavior: Flickable.StopAtBounds
    activeFocusOnTab: false
    // A current row would take the focus with it when others come.
    currentIndex: -1
    bottomMargin: room

    Accessible.role: Accessible.List
    Accessible.name: label

    T.ScrollBar.vertical: AppScrollBar {}

    delegate: QueueRow {
        id: entry

        required property int index
        readonly property bool entered: activeFocus

        width: list.width - (list.contentHeight > list.height ? 12 : 0)
        rows: list.rows

        onYChanged: order.schedule()
        // The keyboard never goes where nobody looks.
        onEnteredChanged: if (entered)
            list.positionViewAtIndex(entry.index, ListView.Contain)
        Keys.onUpPressed: list.step(entry.index, -1)
        Keys.onDownPressed: list.step(entry.index, 1)
        // A row that waits for its next use is none for a screen reader.
        ListView.onPooled: entry.visible = false
        ListView.onReused: entry.visible = true
    }

    ReadingOrder {
        id: order
        of: list.contentItem
    }

    Timer {
        interval: 1000
        repeat: true
        triggeredOnStart: true
        running: list.running
        onTriggered: list.rows.tick()
    }

    EmptyQueueLabel {
        width: list.width
        visible: list.rows.count === 0
        systemImage: list.rows.emptySymbol
        title: list.rows.emptyTitle
        subtitle: list.rows.emptySubtitle
    }
}
