import QtQuick
import ZelkoVanta.Screens

/// The title of a section, drawn in upper case and read out as it is written.
Words {
    color: Theme.tertiary
    font.capitalization: Font.AllUppercase
    font.pixelSize: Theme.captionSize
    font.weight: Font.DemiBold
    Accessible.role: Accessible.Heading
}
