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

    // What is not to be seen is not made, which most computers never need.
    Loader {
        id: setup

        anchors.fill: parent
        active: !window.page.paired
        Component.onCompleted: setSource("SetupView.qml", {
            page: window.page
        })

        Binding {
            target: setup.item
            property: "inSight"
            value: window.inSight
        }
    }
    DeskView {
        id: desk
        anchors.fill: parent
        visible: window.page.paired && !form.active
        page: window.page
        inSight: window.inSight
    }
    Loader {
        id: form

        anchors.fill: parent
        active: false
    }
    Shortcut {
        sequences: ["Ctrl+N"]
        enabled: window.page.paired && !form.active
        onActivated: window.page.openCompose()
    }
    Connections {
        target: window.page
        // The form keeps its model to its own end.
        function onComposeChanged() {
            form.active = window.page.compose !== null;
            if (window.page.compose !== null) {
                form.setSource("ComposeForm.qml", {
                    compose: window.page.compose
                });
            } else {
                form.source = "";
                desk.comeBack();
            }
        }
    }
}
