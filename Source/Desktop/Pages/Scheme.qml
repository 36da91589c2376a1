import QtQuick

// Colours by their meaning.
QtObject {
    readonly property bool isDark: settings.dark
    readonly property color tint: isDark ? "#0A84FF" : "#007AFF"
    readonly property color background: isDark ? "#000000" : "#EFEFF4"
    readonly property color card: isDark ? "#1C1C1E" : "#FFFFFF"
    readonly property color bar: isDark ? "#161618" : "#F9F9FB"
    readonly property color line: isDark ? "#38383A" : "#D8D8DC"
    readonly property color text: isDark ? "#FFFFFF" : "#000000"
    readonly property color quiet: isDark ? "#9A9AA0" : "#6A6A70"
    readonly property color track: isDark ? "#3A3A3C" : "#E3E3E8"
    readonly property color danger: isDark ? "#FF6961" : "#D70015"
}
