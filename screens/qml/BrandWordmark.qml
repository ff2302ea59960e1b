import QtQuick
import ZelkoVanta.Screens

/// The name of the program as it is written: two words, said as one.
Row {
    id: wordmark

    property real size: 18
    readonly property string firstWord: "Zelko"
    readonly property string secondWord: "Vanta"

    spacing: 0.12 * size
    Accessible.role: Accessible.StaticText
    Accessible.name: firstWord + secondWord

    Text {
        anchors.verticalCenter: parent.verticalCenter
        text: wordmark.firstWord
        color: Theme.primary
        font.pixelSize: wordmark.size
        font.weight: Font.Black
        Accessible.ignored: true
    }
    Rectangle {
        anchors.verticalCenter: parent.verticalCenter
        width: Math.ceil(second.implicitWidth + 0.64 * wordmark.size)
        height: Math.ceil(second.implicitHeight) + 2
        radius: 0.25 * wordmark.size
        color: Theme.accent

        Text {
            id: second
            anchors.centerIn: parent
            text: wordmark.secondWord
            color: Theme.ink
            font.pixelSize: wordmark.size
            font.weight: Font.Black
            Accessible.ignored: true
        }
    }
}
