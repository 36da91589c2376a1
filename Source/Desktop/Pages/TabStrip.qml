import QtQuick
import QtQuick.Controls.Basic

// The tabs: a strip of drawings below, or, in a wide window, a bar of words beside.
Rectangle {
    id: strip
    property var scheme
    property bool isWide: false
    color: scheme.bar

    Rectangle {
        width: strip.isWide ? 1 : parent.width
        height: strip.isWide ? parent.height : 1
        x: strip.isWide ? parent.width - 1 : 0
        color: strip.scheme.line
    }

    Grid {
        anchors { horizontalCenter: parent.horizontalCenter; top: parent.top; topMargin: strip.isWide ? 64 : 1 }
        columns: strip.isWide ? 1 : 3
        Repeater {
            model: ["tools", "clean", "settings"]
            Rectangle {
                id: tab
                required property int index
                required property string modelData
                readonly property bool isSelected: host.tab === index
                width: strip.isWide ? strip.width - 16 : Math.min(120, strip.width / 3)
                height: strip.isWide ? 44 : 49
                radius: 8
                color: strip.isWide && isSelected ? strip.scheme.line : "transparent"
                border { width: activeFocus ? 2 : 0; color: strip.scheme.tint }
                activeFocusOnTab: true
                // A button of the toolkit would hide this role.
                Accessible.role: Accessible.PageTab
                Accessible.name: host.tabTitles[index] ?? ""
                Accessible.selected: isSelected
                Accessible.onPressAction: host.selectTab(index)
                Keys.onSpacePressed: host.selectTab(index)
                Keys.onReturnPressed: host.selectTab(index)
                MouseArea { anchors.fill: parent; onClicked: host.selectTab(tab.index) }
                TabIcon {
                    anchors.verticalCenter: parent.verticalCenter
                    x: strip.isWide ? 8 : (tab.width - width) / 2
                    name: tab.modelData
                    color: tab.isSelected ? strip.scheme.tint : strip.scheme.quiet
                }
                Text {
                    visible: strip.isWide
                    anchors { left: parent.left; leftMargin: 48; right: parent.right; verticalCenter: parent.verticalCenter }
                    text: host.tabTitles[tab.index] ?? ""
                    color: tab.isSelected ? strip.scheme.tint : strip.scheme.text
                    font { pixelSize: 16; weight: tab.isSelected ? Font.DemiBold : Font.Normal }
                    elide: Text.ElideRight
                }
            }
        }
    }
}
