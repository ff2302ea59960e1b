import QtQuick
import ZelkoVanta.Screens

/// What every button shares: it is pressed with the mouse, the keyboard or a screen reader. What it looks like is up to
/// whoever stands on it.
Press {
    id: control

    required property string spokenName

    /// Return together with another key is meant for whoever is around the button. Held down it is one press.
    function takeReturn(event) {
        event.accepted = (event.modifiers & (Qt.ControlModifier | Qt.AltModifier | Qt.MetaModifier)) === 0;
        if (event.accepted && !event.isAutoRepeat) {
            control.clicked();
        }
    }

    Accessible.role: Accessible.Button
    Accessible.name: spokenName
    Accessible.onPressAction: if (enabled)
        clicked()

    Keys.onReturnPressed: event => takeReturn(event)
    Keys.onEnterPressed: event => takeReturn(event)
}
