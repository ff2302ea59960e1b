import QtQuick
import ZelkoVanta.Screens

/// The place of a button that a row may have. The button is there while the row offers it.
Loader {
    id: offer

    required property shownButton spec

    signal taken

    function follow() {
        const button = offer.item as RowButton;
        if (button && offer.spec.shown) {
            button.spec = offer.spec;
        } else if (offer.spec.shown) {
            offer.setSource("RowButton.qml", {
                spec: offer.spec
            });
        } else if (button) {
            // The keyboard stays in the row when its button goes.
            if (button.activeFocus)
                button.nextItemInFocusChain().forceActiveFocus(button.focusReason);
            offer.source = "";
        }
    }

    onSpecChanged: follow()
    Component.onCompleted: follow()
    onLoaded: (offer.item as RowButton).clicked.connect(offer.taken)
}
