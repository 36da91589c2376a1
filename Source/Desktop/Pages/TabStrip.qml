import QtQuick
import QtQuick.Controls.Basic

Rectangle {
    id: strip
    property var scheme
    height: 50
    color: scheme.bar

    Rectangle { width: parent.width; height: 1; color: strip.scheme.line }

    Row {
        anchors.centerIn: parent
        Repeater {
            model: ["tools", "clean", "settings"]
            AbstractButton {
                id: tab
                required property int index
                required property string modelData
                width: Math.min(120, strip.width / 3)
                height: 49
                Accessible.name: modelData
                Accessible.role: Accessible.PageTab
                onClicked: host.selectTab(index)
                contentItem: Item {
                    TabIcon {
                        anchors.centerIn: parent
                        name: tab.modelData
                        color: host.tab === tab.index ? strip.scheme.tint : strip.scheme.quiet
                    }
                }
                background: Rectangle {
                    radius: 8
                    color: "transparent"
                    border { width: tab.visualFocus ? 2 : 0; color: strip.scheme.tint }
                }
            }
        }
    }
}
