import QtQuick
import ZelkoVanta.Screens

/// The mark of the program.
SymbolIcon {
    symbol: "brand_mark"
}
