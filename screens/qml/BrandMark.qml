import QtQuick
import ZelkoVanta.Screens

/// The mark of the program. It takes the proportions of its place.
SymbolIcon {
    symbol: "brand_mark"
    implicitWidth: 40
    implicitHeight: 48
}
