import QtQuick
import ZelkoVanta.Screens

/// The place of a button that a row may have. The button is there while the row offers it.
Item {
    id: offer

    required property shownButton spec
    readonly property RowButton button: place.item as RowButton

    signal taken
    /// The keyboard arrives at the button.
    signal entered(int reason)

    function follow() {
        if (offer.button && offer.spec.shown) {
            offer.button.spec = offer.spec;
        } else if (offer.spec.shown) {
            place.setSource("RowButton.qml", {
                spec: offer.spec
            });
        } else if (offer.button) {
            // The keyboard stays in the row when its button goes.
            if (offer.button.activeFocus)
                offer.button.nextItemInFocusChain().forceActiveFocus(offer.button.focusReason);
            place.source = "";
        }
    }

    // A Loader keeps the size of what it held.
    implicitWidth: offer.button?.implicitWidth ?? 0
    implicitHeight: offer.button?.implicitHeight ?? 0

    onSpecChanged: follow()
    Component.onCompleted: follow()

    Loader {
        id: place

        anchors.fill: parent
        onLoaded: {
            offer.button.clicked.connect(offer.taken);
            offer.button.entered.connect(offer.entered);
        }
    }
}
