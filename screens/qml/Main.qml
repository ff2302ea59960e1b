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

    /// How the keyboard goes into the next form and comes back from it. Only a key shows where it is.
    property int reason: Qt.OtherFocusReason

    function openCompose(by: int) {
        window.reason = by;
        window.page.openCompose();
    }

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
        onComposeAsked: by => window.openCompose(by)
    }
    Loader {
        id: form

        anchors.fill: parent
        active: false
    }
    Shortcut {
        sequences: ["Ctrl+N"]
        enabled: window.page.paired && !form.active
        onActivated: window.openCompose(Qt.ShortcutFocusReason)
    }
    Connections {
        target: form.item
        function onPressed(by: int) {
            window.reason = by;
        }
    }
    Connections {
        target: window.page
        // The form keeps its model to its own end.
        function onComposeChanged() {
            form.active = window.page.compose !== null;
            if (window.page.compose !== null) {
                form.setSource("ComposeForm.qml", {
                    compose: window.page.compose,
                    focusReason: window.reason
                });
            } else {
                form.source = "";
                desk.comeBack(window.reason);
            }
        }
    }
}
