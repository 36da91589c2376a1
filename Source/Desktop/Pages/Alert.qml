import QtQuick
import QtQuick.Controls.Basic

// The dialog or sheet on top, over a shade.
FocusScope {
    id: layer
    property var alert
    property var scheme
    visible: alert !== null
    focus: visible

    Rectangle { anchors.fill: parent; color: "#66000000" }
    MouseArea { anchors.fill: parent; onClicked: if (layer.alert.sheet) layer.alert.cancel() }
    Keys.onEscapePressed: layer.alert.cancel()

    Rectangle {
        id: box
        readonly property bool isSheet: layer.alert !== null && layer.alert.sheet
        width: isSheet ? Math.min(parent.width - 24, 400) : 280
        height: column.height
        anchors.horizontalCenter: parent.horizontalCenter
        y: isSheet ? parent.height - height - 12 : (parent.height - height) / 2
        radius: 14
        color: layer.scheme.card
        Accessible.role: Accessible.Dialog
        Accessible.name: layer.alert ? layer.alert.title + "\n" + layer.alert.message : ""

        Column {
            id: column
            width: parent.width
            topPadding: heading.text === "" && words.text === "" ? 0 : 18
            Text {
                id: heading
                visible: text !== ""
                text: layer.alert ? layer.alert.title : ""
                width: parent.width - 32
                x: 16
                color: layer.scheme.text
                font { pixelSize: 17; weight: Font.DemiBold }
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.Wrap
            }
            Text {
                id: words
                visible: text !== ""
                text: layer.alert ? layer.alert.message : ""
                width: parent.width - 32
                x: 16
                topPadding: 4
                bottomPadding: 16
                color: layer.scheme.text
                font.pixelSize: 13
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.Wrap
            }
            TextField {
                visible: layer.alert !== null && layer.alert.asksText
                x: 16
                width: parent.width - 32
                text: layer.alert ? layer.alert.text : ""
                onTextEdited: layer.alert.text = text
                focus: visible
                color: layer.scheme.text
                background: Rectangle { radius: 6; color: layer.scheme.background; border.color: layer.scheme.line }
            }
            Grid {
                id: grid
                readonly property bool isRow: !box.isSheet && layer.alert !== null && layer.alert.buttons.length === 2
                width: parent.width
                topPadding: 12
                columns: isRow ? 2 : 1
                Repeater {
                    model: layer.alert ? layer.alert.buttons : []
                    AbstractButton {
                        id: button
                        required property int index
                        required property var modelData
                        width: grid.isRow ? grid.width / 2 : grid.width
                        height: 44
                        focus: index === 0
                        Accessible.name: modelData.title
                        onClicked: layer.alert.press(index)
                        contentItem: Text {
                            text: button.modelData.title
                            color: button.modelData.style === 2 ? layer.scheme.danger : layer.scheme.tint
                            font { pixelSize: 17; weight: button.modelData.style === 1 ? Font.DemiBold : Font.Normal }
                            horizontalAlignment: Text.AlignHCenter
                            verticalAlignment: Text.AlignVCenter
                        }
                        background: Item {
                            Rectangle { width: parent.width; height: 1; color: layer.scheme.line }
                            Rectangle {
                                anchors { fill: parent; margins: 3 }
                                radius: 10
                                color: button.down ? layer.scheme.line : "transparent"
                                border { width: button.visualFocus ? 2 : 0; color: layer.scheme.tint }
                            }
                        }
                    }
                }
            }
        }
    }
}
