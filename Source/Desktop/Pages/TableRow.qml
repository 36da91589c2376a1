import QtQuick
import QtQuick.Controls.Basic

// A row on its card: icon, text, and a control or a chevron.
Item {
    id: row
    property var entry
    property var scheme
    property bool focused: false
    signal pressed()
    signal turned(int value)

    // A reader hears a row as one sentence: what it is, and how it stands.
    readonly property string standing: !entry ? "" : entry.control === "switch" ? (entry.value === 1 ? "on" : "off")
                                   : entry.control === "segments" ? entry.titles[entry.value] : entry.detail
    Accessible.role: Accessible.ListItem
    Accessible.name: !entry ? "" : entry.text + (standing !== "" ? ", " + standing : "")
    Accessible.focusable: true
    Accessible.focused: focused
    Accessible.ignored: !visible
    Accessible.onPressAction: pressed()

    Rectangle {
        anchors.fill: parent
        // Only the first and the last row of a card have its corners.
        radius: row.entry && (row.entry.first || row.entry.last) ? 12 : 0
        color: area.pressed ? row.scheme.line : row.scheme.card
        border { width: row.focused ? 2 : 0; color: row.scheme.tint }
        Rectangle {
            visible: row.entry && row.entry.first && !row.entry.last
            anchors { left: parent.left; right: parent.right; bottom: parent.bottom }
            height: 12
            color: parent.color
        }
        Rectangle {
            visible: row.entry && row.entry.last && !row.entry.first
            anchors { left: parent.left; right: parent.right; top: parent.top }
            height: 12
            color: parent.color
        }
    }
    Rectangle {
        visible: row.entry && !row.entry.first
        anchors { left: label.left; right: parent.right; top: parent.top }
        height: 1
        color: row.scheme.line
    }
    MouseArea { id: area; anchors.fill: parent; onClicked: row.pressed() }
    RowIcon {
        id: icon
        anchors { left: parent.left; leftMargin: 12; verticalCenter: parent.verticalCenter }
        source: row.entry ? row.entry.image : ""
    }
    Text {
        id: label
        anchors {
            left: icon.right; leftMargin: 12
            right: control.left; rightMargin: 8
            verticalCenter: parent.verticalCenter
        }
        text: row.entry ? row.entry.text : ""
        color: row.scheme.text
        font.pixelSize: 16
        fontSizeMode: Text.Fit
        minimumPixelSize: 11
        height: parent.height - 6
        verticalAlignment: Text.AlignVCenter
        textFormat: Text.PlainText
        wrapMode: Text.WordWrap
        maximumLineCount: 2
        clip: true
    }
    Loader {
        id: control
        anchors { right: parent.right; rightMargin: 12; verticalCenter: parent.verticalCenter }
        sourceComponent: !row.entry ? null : row.entry.control === "switch" ? onOff
                       : row.entry.control === "segments" ? segments : row.entry.accessory === 1 ? chevron : null
    }
    Component {
        id: onOff
        Switch {
            id: toggle
            checked: row.entry.value === 1
            padding: 0
            Accessible.name: row.entry.text
            onToggled: row.turned(checked ? 1 : 0)
            indicator: Rectangle {
                implicitWidth: 46
                implicitHeight: 28
                radius: 14
                color: toggle.checked ? row.scheme.tint : row.scheme.track
                border { width: toggle.visualFocus ? 2 : 0; color: row.scheme.text }
                Rectangle {
                    x: toggle.checked ? 20 : 2
                    y: 2
                    width: 24
                    height: 24
                    radius: 12
                    color: "white"
                    Behavior on x { NumberAnimation { duration: 120 } }
                }
            }
        }
    }
    Component {
        id: segments
        Rectangle {
            width: parts.width + 4
            height: 30
            radius: 8
            color: row.scheme.track
            Row {
                id: parts
                anchors.centerIn: parent
                Repeater {
                    model: row.entry.titles
                    Rectangle {
                        id: part
                        required property int index
                        required property string modelData
                        readonly property bool isChosen: row.entry.value === index
                        width: Math.max(34, word.implicitWidth + 12)
                        height: 26
                        radius: 6
                        color: isChosen ? row.scheme.card : "transparent"
                        border { width: activeFocus ? 2 : 0; color: row.scheme.tint }
                        activeFocusOnTab: true
                        Accessible.role: Accessible.RadioButton
                        Accessible.name: row.entry.text + ": " + modelData
                        Accessible.checkable: true
                        Accessible.checked: isChosen
                        Accessible.onPressAction: row.turned(index)
                        Keys.onSpacePressed: row.turned(index)
                        Text {
                            id: word
                            anchors.centerIn: parent
                            text: part.modelData
                            color: row.scheme.text
                            font { pixelSize: 13; weight: part.isChosen ? Font.DemiBold : Font.Normal }
                        }
                        MouseArea { anchors.fill: parent; onClicked: row.turned(part.index) }
                    }
                }
            }
        }
    }
    Component {
        id: chevron
        Text { text: "\u203A"; color: row.scheme.quiet; font.pixelSize: 22 }
    }
}
