import QtQuick

// The drawing of a tab, in the colour that the page gives it.
Image {
    property string name
    property color color
    readonly property var drawings: ({ tools: "AdvancedIcon", clean: "CleanIcon", settings: "SettingsIcon" })
    width: 29
    height: 29
    source: images.base + encodeURIComponent("OZImage:///" + drawings[name] + color)
    asynchronous: true
}
