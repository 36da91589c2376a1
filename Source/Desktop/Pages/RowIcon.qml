import QtQuick

// A tile of 29 points with the drawing that its URL names.
Rectangle {
    id: tile
    property string source
    readonly property var looks: ({
        "com.apple.MobileSMS": ["#34C759", "\u2709"], "com.apple.mobilesafari": ["#007AFF", "\u25CE"],
        "com.apple.AppStore": ["#5E5CE6", "\u25A6"], "com.apple.Preferences": ["#8E8E93", "\u2193"],
        "com.saurik.Cydia": ["#A2845E", "\u25A3"], "BatteryIcon": ["#30B0C7", "\u25AE"],
        "TextIcon": ["#FF9500", "\u2261"], "FileIcon": ["#FF2D55", "\u25AF"], "FolderIcon": ["#007AFF", "\u25B0"]
    })
    readonly property var look: looks[source.replace("OZAppId://", "").replace("OZImage:///", "").replace("/", "")]
                                ?? ["#8E8E93", ""]
    width: 29
    height: 29
    radius: 6.5
    color: look[0]
    Text { anchors.centerIn: parent; text: tile.look[1]; color: "white"; font.pixelSize: 17 }
}
