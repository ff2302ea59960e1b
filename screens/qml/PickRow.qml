import QtQuick
import ZelkoVanta.Screens

/// One entry that can be chosen beside others, over the whole width. What is chosen stands in the model; a press only
/// asks for it.
PressButton {
    id: control

    property bool checked: false
    /// The colour that tells this entry from its neighbours.
    property color edge: Theme.secondary

    implicitHeight: 40
    horizontalPadding: 10

    Accessible.role: Accessible.CheckBox
    Accessible.checkable: true
    Accessible.checked: checked
    Accessible.onToggleAction: if (enabled)
        clicked()

    background: PickRowFace {
        chosen: control.checked
        down: control.down
        tint: control.edge
        ringed: control.visualFocus
    }
}
