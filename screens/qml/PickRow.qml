import QtQuick
import QtQuick.Templates as T
import ZelkoVanta.Screens

/// One entry that can be chosen beside others, over the whole width. What is chosen stands in the model; a press only
/// asks for it.
T.CheckBox {
    id: control

    required property string spokenName
    /// The colour that tells this entry from its neighbours.
    property color edge: Theme.secondary

    signal picked

    /// Return together with another key is meant for whoever is around.
    function takeReturn(event) {
        event.accepted = (event.modifiers & (Qt.ControlModifier | Qt.AltModifier | Qt.MetaModifier)) === 0;
        if (event.accepted) {
            control.picked();
        }
    }

    implicitWidth: contentItem.implicitWidth + leftPadding + rightPadding
    implicitHeight: Math.max(40, contentItem.implicitHeight + topPadding + bottomPadding)
    horizontalPadding: 10
    verticalPadding: 6
    focusPolicy: Qt.StrongFocus
    nextCheckState: () => control.checkState

    Accessible.role: Accessible.CheckBox
    Accessible.name: spokenName
    Accessible.onPressAction: picked()
    Accessible.onToggleAction: picked()

    onClicked: picked()
    Keys.onReturnPressed: event => takeReturn(event)
    Keys.onEnterPressed: event => takeReturn(event)

    background: PickRowFace {
        chosen: control.checked
        down: control.down
        tint: control.edge
        ringed: control.visualFocus
    }
}
