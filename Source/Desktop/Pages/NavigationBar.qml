import QtQuick
import QtQuick.Controls.Basic

Rectangle {
    id: bar
    property var scheme
    property var screen
    height: 52
    color: scheme.bar

    Rectangle { anchors.bottom: parent.bottom; width: parent.width; height: 1; color: bar.scheme.line }

    BarAction {
        anchors { left: parent.left; leftMargin: 8; verticalCenter: parent.verticalCenter }
        scheme: bar.scheme
        text: bar.screen ? bar.screen.leftTitle : ""
        enabled: bar.screen !== null && bar.screen.leftEnabled
        onClicked: bar.screen.pressLeft()
    }
    Text {
        anchors.centerIn: parent
        text: bar.screen ? bar.screen.title : ""
        color: bar.scheme.text
        font { pixelSize: 17; weight: Font.DemiBold }
        elide: Text.ElideRight
        width: Math.min(implicitWidth, parent.width - 200)
    }
    BarAction {
        anchors { right: parent.right; rightMargin: 8; verticalCenter: parent.verticalCenter }
        scheme: bar.scheme
        strong: true
        text: bar.screen ? bar.screen.rightTitle : ""
        enabled: bar.screen !== null && bar.screen.rightEnabled
        onClicked: bar.screen.pressRight()
    }
}
