import QtQuick
import QtQuick.Controls.Basic

// The dialog or sheet on top, over a shade.
FocusScope {
    id: dialog
    property var alert
    property var scheme
    visible: alert !== null
    focus: visible

    Rectangle { anchors.fill: parent; color: "#66000000" }
    MouseArea { anchors.fill: parent; onClicked: if (dialog.alert.sheet) dialog.alert.cancel() }
    Keys.onEscapePressed: dialog.alert.cancel()

    Rectangle {
        id: box
        readonly property bool isSheet: dialog.alert !== null && dialog.alert.sheet
        width: isSheet ? Math.min(parent.width - 24, 400) : 280
        height: column.height
        anchors.horizontalCenter: parent.horizontalCenter
        y: isSheet ? parent.height - height - 12 : (parent.height - height) / 2
        radius: 14
        color: dialog.scheme.card
        Accessible.role: Accessible.Dialog
        Accessible.name: dialog.alert ? dialog.alert.title + "\n" + dialog.alert.message : ""

        Column {
            id: column
            width: parent.width
            topPadding: heading.text === "" && words.text === "" ? 0 : 18
            Text {
                id: heading
                visible: text !== ""
                text: dialog.alert ? dialog.alert.title : ""
                width: parent.width - 32
                x: 16
                color: dialog.scheme.text
                font { pixelSize: 17; weight: Font.DemiBold }
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.Wrap
            }
            Text {
                id: words
                visible: text !== ""
                text: dialog.alert ? dialog.alert.message : ""
                width: parent.width - 32
                x: 16
                topPadding: 4
                bottomPadding: 4
                color: dialog.scheme.text
                font.pixelSize: 13
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.Wrap
            }
            TextField {
                visible: dialog.alert !== null && dialog.alert.asksText
                x: 16
                width: parent.width - 32
                text: dialog.alert ? dialog.alert.text : ""
                onTextEdited: dialog.alert.text = text
                focus: visible
                color: dialog.scheme.text
                background: Rectangle { radius: 6; color: dialog.scheme.background; border.color: dialog.scheme.line }
            }
            Grid {
                id: grid
                readonly property bool isRow: !box.isSheet && dialog.alert !== null && dialog.alert.buttons.length === 2
                width: parent.width
                topPadding: column.topPadding > 0 ? 12 : 0
                columns: isRow ? 2 : 1
                Repeater {
                    model: dialog.alert ? dialog.alert.buttons : []
                    AbstractButton {
                        id: button
                        required property int index
                        required property var modelData
                        width: grid.isRow ? grid.width / 2 : grid.width
                        height: 44
                        focus: index === 0
                        Accessible.name: modelData.title
                        onClicked: dialog.alert.press(index)
                        contentItem: Text {
                            text: button.modelData.title
                            color: button.modelData.style === 2 ? dialog.scheme.danger : dialog.scheme.tint
                            font { pixelSize: 17; weight: button.modelData.style === 1 ? Font.DemiBold : Font.Normal }
                            horizontalAlignment: Text.AlignHCenter
                            verticalAlignment: Text.AlignVCenter
                        }
                        background: Item {
                            Rectangle {
                                visible: button.index > 0 || column.topPadding > 0
                                width: parent.width
                                height: 1
                                color: dialog.scheme.line
                            }
                            Rectangle {
                                anchors { fill: parent; margins: 3 }
                                radius: 10
                                color: button.down ? dialog.scheme.line : "transparent"
                                border { width: button.visualFocus ? 2 : 0; color: dialog.scheme.tint }
                            }
                        }
                    }
                }
            }
        }
    }
}
