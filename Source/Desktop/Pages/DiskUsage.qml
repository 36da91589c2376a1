import QtQuick

// A bar for each partition: what is used, in words and drawn.
Rectangle {
    id: usage
    property var scheme
    property var partitions
    radius: 12
    color: scheme.card
    height: column.height + 20
    Column {
        id: column
        x: 14
        y: 10
        width: parent.width - 28
        spacing: 8
        Repeater {
            model: usage.partitions
            Item {
                id: part
                required property var modelData
                width: column.width
                height: 26
                Accessible.role: Accessible.ProgressBar
                Accessible.name: modelData.name + " " + modelData.words
                Text { text: part.modelData.name; color: usage.scheme.text; font.pixelSize: 13 }
                Text { anchors.right: parent.right; text: part.modelData.words; color: usage.scheme.quiet; font.pixelSize: 12 }
                Rectangle {
                    anchors.bottom: parent.bottom
                    width: parent.width
                    height: 6
                    radius: 3
                    color: usage.scheme.track
                    Rectangle {
                        width: parent.width * part.modelData.share
                        height: 6
                        radius: 3
                        color: part.modelData.share > 0.95 ? usage.scheme.danger : usage.scheme.tint
                    }
                }
            }
        }
    }
}
