import QtQuick
import QtQuick.Controls.Basic

AbstractButton {
    id: action
    property var scheme
    property bool strong: false
    visible: text !== ""
    padding: 10
    Accessible.name: text
    contentItem: Text {
        text: action.text
        color: action.enabled ? action.scheme.tint : action.scheme.quiet
        opacity: action.down ? 0.5 : 1
        font { pixelSize: 17; weight: action.strong ? Font.DemiBold : Font.Normal }
    }
    background: Rectangle {
        radius: 8
        color: "transparent"
        border { width: action.visualFocus ? 2 : 0; color: action.scheme.tint }
    }
}
