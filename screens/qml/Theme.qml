pragma Singleton

import QtQuick

/// Colours and sizes. Light or dark follows the desktop's palette.
QtObject {
    id: theme

    readonly property SystemPalette system: SystemPalette {}
    readonly property bool dark: system.window.hslLightness < 0.5

    readonly property color ink: "#1A1206"
    readonly property color accent: "#FFE14D"
    readonly property color blue: "#5789F2"
    readonly property color red: "#E21833"
    readonly property color green: "#2FA24F"

    readonly property color page: dark ? "#141018" : "#FFFFFF"
    readonly property color band: dark ? "#191521" : "#F7F2E4"
    readonly property color card: dark ? "#1E1B24" : "#FFFFFF"
    readonly property color primary: dark ? "#F3EFE6" : "#1A1206"
    readonly property color secondary: dark ? "#C9C4BB" : "#5C5142"
    readonly property color tertiary: dark ? "#8F8A80" : "#736A5B"
    readonly property color hairline: dark ? "#24FFFFFF" : "#1F1A1206"
    readonly property color blueText: dark ? "#8FB0F7" : "#3457C4"
    readonly property color redText: dark ? "#FF6B7E" : "#C41230"
    readonly property color greenText: dark ? "#57C077" : "#1E7A38"
    readonly property color focusRing: dark ? "#8FB0F7" : "#3457C4"

    readonly property int captionSize: 12
    readonly property int textSize: 14
    readonly property int titleSize: 18
    readonly property int radius: 10
    readonly property int margin: 12
}
