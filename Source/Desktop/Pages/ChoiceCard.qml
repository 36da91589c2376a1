import QtQuick
import QtQuick.Controls.Basic

// A card of rows to choose from, below its title.
Column {
    id: card
    property var scheme
    property string title
    property var choices
    signal chosen(string folder)
    visible: choices.length > 0
    spacing: 6

    Text {
        visible: card.title !== ""
        x: 16
        text: card.title
        color: card.scheme.quiet
        font.pixelSize: 13
        Accessible.role: Accessible.Heading
        Accessible.name: text
    }
    Rectangle {
        width: card.width
        height: rows.height
        radius: 12
        color: card.scheme.card
        Column {
            id: rows
            width: parent.width
            Repeater {
                model: card.choices
                AbstractButton {
                    id: row
                    required property int index
                    required property var modelData
                    width: rows.width
                    height: words.height + 20
                    Accessible.name: modelData.title + ", " + modelData.detail
                    onClicked: card.chosen(modelData.folder)
                    background: Rectangle {
                        radius: 12
                        color: row.down ? card.scheme.line : "transparent"
                        border { width: row.visualFocus ? 2 : 0; color: card.scheme.tint }
                        Rectangle {
                            visible: row.index > 0
                            x: 16
                            width: parent.width - 16
                            height: 1
                            color: card.scheme.line
                        }
                    }
                    contentItem: Item {
                        Column {
                            id: words
                            x: 16
                            width: parent.width - 56
                            anchors.verticalCenter: parent.verticalCenter
                            spacing: 2
                            Text {
                                width: parent.width
                                text: row.modelData.title
                                textFormat: Text.PlainText
                                color: card.scheme.text
                                font.pixelSize: 16
                                elide: Text.ElideMiddle
                            }
                            Text {
                                width: parent.width
                                text: row.modelData.detail
                                textFormat: Text.PlainText
                                color: card.scheme.quiet
                                font.pixelSize: 12
                                wrapMode: Text.WrapAtWordBoundaryOrAnywhere
                                maximumLineCount: 3
                                elide: Text.ElideRight
                            }
                        }
                        Text {
                            anchors { right: parent.right; rightMargin: 16; verticalCenter: parent.verticalCenter }
                            text: "\u203A"
                            color: card.scheme.quiet
                            font.pixelSize: 22
                        }
                    }
                }
            }
        }
    }
}
