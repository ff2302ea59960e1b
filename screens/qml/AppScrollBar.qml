import QtQuick
import ZelkoVanta.Screens

/// How far something has been scrolled, at its edge. Can be taken along.
Item {
    id: control

    required property Flickable of

    readonly property real share: of.visibleArea.heightRatio
    /// Of the bar's height; never too small to be taken.
    readonly property real length: Math.max(0.06, share)
    readonly property real place: share < 1 ? of.visibleArea.yPosition / (1 - share) * (1 - length) : 0

    function placeAt(y: real): real {
        return (y - 1) / (control.height - 2);
    }

    parent: of
    x: of.width - width
    z: 1
    width: 8
    // The list's end may lie below something that floats above it.
    height: of.height - of.bottomMargin
    visible: share < 1
    Accessible.ignored: true

    Rectangle {
        x: 1
        y: 1 + control.place * (control.height - 2)
        width: 6
        height: control.length * (control.height - 2)
        radius: control.visible ? 3 : 0
        color: Theme.tertiary
        opacity: area.pressed ? 0.9 : area.containsMouse ? 0.7 : 0.45
    }
    MouseArea {
        id: area

        /// Where on the handle it was taken.
        property real hold: 0

        anchors.fill: parent
        hoverEnabled: true
        preventStealing: true
        onPressed: mouse => {
            const taken = control.placeAt(mouse.y) - control.place;
            hold = taken >= 0 && taken <= control.length ? taken : control.length / 2;
            positionChanged(mouse);
        }
        onPositionChanged: mouse => {
            if (pressed && control.length < 1) {
                const place = Math.max(0, Math.min(1 - control.length, control.placeAt(mouse.y) - hold));
                const way = control.of.contentHeight + control.of.topMargin + control.of.bottomMargin - control.of.height;
                control.of.contentY = control.of.originY - control.of.topMargin + place / (1 - control.length) * way;
            }
        }
    }
}
