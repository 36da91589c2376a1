import QtQuick

// The image that a URL of the image cache names, in the size of a row's. Until it is there, a plain tile.
Item {
    id: icon
    property string source
    width: 29
    height: 29
    visible: source !== ""

    Rectangle {
        anchors.fill: parent
        visible: picture.implicitWidth === 0
        radius: 6.5
        color: "#408E8E93"
    }
    Image {
        id: picture
        anchors.centerIn: parent
        width: Math.min(icon.width, implicitWidth)
        height: Math.min(icon.height, implicitHeight)
        // With it, a point of the image is one of the page, however many pixels it has.
        sourceSize: Qt.size(icon.width, icon.height)
        source: icon.source === "" ? "" : images.base + encodeURIComponent(icon.source)
        fillMode: Image.PreserveAspectFit
        asynchronous: true
    }
}
