import QtQuick
import QtQuick.Controls.Basic

// A text to read, a line below the other.
ListView {
    id: page
    property var screen: parent.screen
    property var scheme: ApplicationWindow.window.scheme
    model: screen.lines
    clip: true
    topMargin: 8
    bottomMargin: 8 + screen.bottomInset
    boundsBehavior: Flickable.StopAtBounds
    activeFocusOnTab: true
    ScrollBar.vertical: ScrollBar {}
    Accessible.role: Accessible.EditableText
    Accessible.name: screen.title
    Accessible.readOnly: true

    delegate: Text {
        required property string display
        x: 12
        width: page.width - 24
        text: display
        textFormat: Text.PlainText
        color: page.scheme.text
        font { family: "monospace"; pixelSize: 12 }
        wrapMode: Text.WrapAnywhere
        Accessible.role: Accessible.StaticText
        Accessible.name: display
    }

    Keys.onPressed: (event) => {
        const pages = { [Qt.Key_PageDown]: 1, [Qt.Key_Space]: 1, [Qt.Key_PageUp]: -1, [Qt.Key_Down]: 0.1, [Qt.Key_Up]: -0.1 }
        if (event.key === Qt.Key_Home) {
            positionViewAtBeginning()
        } else if (event.key === Qt.Key_End) {
            positionViewAtEnd()
        } else if (event.key in pages) {
            contentY = Math.max(originY - topMargin,
                                Math.min(contentY + pages[event.key] * height, originY + contentHeight + bottomMargin - height))
        } else {
            return
        }
        event.accepted = true
    }
}
