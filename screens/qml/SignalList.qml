pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import ZelkoVanta.Screens

/// A queue. Its clock runs only while somebody can see a row.
ListView {
    id: list

    required property PageModel page
    required property RowModel rows
    required property string label
    required property string emptyText
    required property bool inSight

    property double now: page.now()

    function keepTime() {
        list.now = list.page.now();
    }

    clip: true
    model: rows
    reuseItems: true
    boundsBehavior: Flickable.StopAtBounds
    activeFocusOnTab: false
    // A current row would take the focus with it when others come.
    currentIndex: -1

    Accessible.role: Accessible.List
    Accessible.name: label

    T.ScrollBar.vertical: AppScrollBar {}

    delegate: SignalRow {
        id: entry

        width: list.width - (list.contentHeight > list.height ? 12 : 0)
        page: list.page
        now: list.now

        // A row that waits for its next use is none for a screen reader.
        ListView.onPooled: entry.visible = false
        ListView.onReused: entry.visible = true
    }

    Timer {
        interval: 1000
        repeat: true
        triggeredOnStart: true
        running: list.inSight && list.visible && list.rows.count > 0
        onTriggered: list.keepTime()
    }

    Caption {
        anchors.horizontalCenter: parent.horizontalCenter
        y: 36
        width: Math.min(implicitWidth, parent.width)
        visible: list.rows.count === 0
        text: list.emptyText
        color: Theme.tertiary
        font.pixelSize: Theme.textSize
    }
}
