import QtQuick
import ZelkoVanta.Screens

Window {
    id: window

    required property PageModel page

    width: 420
    height: 680
    minimumWidth: 320
    minimumHeight: 480
    color: Theme.page
    title: page.paired && page.title !== "" ? page.title + " – ZelkoVanta" : "ZelkoVanta"

    readonly property bool inSight: visible && visibility !== Window.Minimized

    SetupView {
        anchors.fill: parent
        visible: !window.page.paired
        page: window.page
    }
    DeskView {
        anchors.fill: parent
        visible: window.page.paired
        page: window.page
        inSight: window.inSight
    }
}
