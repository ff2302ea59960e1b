import QtQuick
import ZelkoVanta.Screens

/// Some components under a title.
Column {
    id: part

    required property string title
    default property alias content: place.data

    spacing: 10

    SectionHeader {
        text: part.title.toUpperCase()
    }
    Flow {
        id: place
        width: part.width
        spacing: 12
    }
}
