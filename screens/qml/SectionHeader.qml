import QtQuick
import ZelkoVanta.Screens

/// The title of a section, in upper case already.
Words {
    color: Theme.tertiary
    font.pixelSize: Theme.captionSize
    font.weight: Font.DemiBold
    Accessible.role: Accessible.Heading
}
