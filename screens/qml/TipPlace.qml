import QtQuick

/// Where a tip may be wanted. It is made when the pointer first rests there.
Loader {
    id: place

    required property string text
    required property bool shown

    function follow() {
        if (place.shown && place.text !== "" && place.status === Loader.Null) {
            place.setSource("Tip.qml");
        }
    }

    onShownChanged: follow()

    Binding {
        target: place.item
        property: "text"
        value: place.text
    }
    Binding {
        target: place.item
        property: "visible"
        value: place.shown && place.text !== ""
    }
}
