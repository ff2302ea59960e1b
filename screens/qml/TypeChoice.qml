import QtQuick
import ZelkoVanta.Screens

/// One kind of signal, of which one is chosen.
PickRow {
    id: control

    required property string label
    required property color tint
    required property bool chosen
    required property real widest

    checked: chosen
    edge: tint
    spokenName: label
    implicitWidth: Math.min(widest, Math.ceil(name.implicitWidth) + 20 + 34)
    implicitHeight: 36

    Accessible.role: Accessible.RadioButton

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
}
