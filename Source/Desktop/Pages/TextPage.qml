import QtQuick
import QtQuick.Controls.Basic

// A text to read.
ScrollView {
    id: page
    property var screen: parent.screen
    property var scheme: ApplicationWindow.window.scheme
    background: Rectangle { color: page.scheme.card }
    bottomPadding: screen.bottomInset
    TextArea {
        text: page.screen.content
        readOnly: true
        selectByMouse: true
        color: page.scheme.text
        font { family: "monospace"; pixelSize: 12 }
        wrapMode: TextArea.WrapAnywhere
        background: null
        Accessible.name: page.screen.title
    }
}
