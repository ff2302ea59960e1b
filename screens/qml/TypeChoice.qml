import QtQuick
import QtQuick.Templates as T
import ZelkoVanta.Screens

/// One kind of signal, of which one is chosen.
T.RadioButton {
    id: control

    required property string label
    required property color tint
    required property bool chosen
    required property real widest

    signal picked

    /// Return together with another key is meant for whoever is around.
    function takeReturn(event) {
        event.accepted = (event.modifiers & (Qt.ControlModifier | Qt.AltModifier | Qt.MetaModifier)) === 0;
        if (event.accepted) {
            control.picked();
        }
    }

    checked: chosen
    implicitWidth: Math.min(widest, Math.ceil(name.implicitWidth) + 20 + 34)
    implicitHeight: 36
    horizontalPadding: 10
    focusPolicy: Qt.StrongFocus

    Accessible.role: Accessible.RadioButton
    Accessible.name: label
    Accessible.onPressAction: picked()
    Accessible.onToggleAction: picked()

    onClicked: picked()
    Keys.onReturnPressed: event => takeReturn(event)
    Keys.onEnterPressed: event => takeReturn(event)

    contentItem: Item {
        TypeMark {
            anchors.verticalCenter: parent.verticalCenter
            side: 22
            tint: control.tint
        }
        Words {
            id: name
            x: 34
            width: parent.width - x
            anchors.verticalCenter: parent.verticalCenter
            text: control.label
            font.weight: control.chosen ? Font.DemiBold : Font.Normal
            Accessible.ignored: true
        }
    }
    background: PickRowFace {
        chosen: control.checked
        down: control.down
        ringed: control.visualFocus
        tint: control.tint
    }
}
