import QtQuick
import QtQuick.Controls.Basic

// Every table screen.
ListView {
    id: list
    property var screen: parent.screen
    property var scheme: ApplicationWindow.window.scheme
    readonly property real side: Math.max(16, (width - 640) / 2)

    model: screen.entries
    clip: true
    bottomMargin: screen.bottomInset
    boundsBehavior: Flickable.StopAtBounds
    activeFocusOnTab: true
    keyNavigationEnabled: true
    ScrollBar.vertical: ScrollBar {}
    onContentYChanged: screen.noteOffset(contentY)

    Connections {
        target: list.screen
        function onScrollWanted(offset, animated) { list.contentY = offset }
        function onEntryWanted(entry) { list.positionViewAtIndex(entry, ListView.Beginning) }
    }

    delegate: Item {
        id: place
        required property int index
        required property var entry
        width: list.width
        height: entry.kind === "header" && entry.section === 0 && list.screen.partitions.length > 0
                ? usage.height + 24 : entry.height

        TableRow {
            visible: place.entry.kind === "row"
            entry: place.entry.kind === "row" ? place.entry : null
            scheme: list.scheme
            anchors { fill: parent; leftMargin: list.side; rightMargin: list.side }
            focused: list.activeFocus && list.currentIndex === place.index
            onPressed: { list.currentIndex = place.index; list.screen.press(place.index) }
            onTurned: (value) => list.screen.turn(place.index, value)
        }
        Text {
            visible: place.entry.kind !== "row"
            anchors { fill: parent; leftMargin: list.side + 16; rightMargin: list.side + 16; topMargin: 6 }
            text: place.entry.text ?? ""
            color: list.scheme.quiet
            font.pixelSize: 13
            horizontalAlignment: place.entry.centred ? Text.AlignHCenter : Text.AlignLeft
            verticalAlignment: place.entry.kind === "header" ? Text.AlignBottom : Text.AlignTop
            wrapMode: Text.Wrap
        }
        DiskUsage {
            id: usage
            visible: place.entry.kind === "header" && place.entry.section === 0 && list.screen.partitions.length > 0
            x: list.side
            y: 12
            width: list.width - 2 * list.side
            scheme: list.scheme
            partitions: visible ? list.screen.partitions : []
        }
    }

    Keys.onReturnPressed: screen.press(currentIndex)
    Keys.onSpacePressed: screen.press(currentIndex)
}
