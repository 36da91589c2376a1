import QtQuick

// The three tabs' drawings, one stroke wide.
Canvas {
    id: icon
    property string name
    property color color
    width: 28
    height: 28
    onColorChanged: requestPaint()
    onPaint: {
        const draw = getContext("2d")
        draw.reset()
        draw.strokeStyle = color
        draw.lineWidth = 1.8
        draw.lineCap = "round"
        draw.lineJoin = "round"
        draw.beginPath()
        if (name === "clean") {
            draw.moveTo(22, 4); draw.lineTo(14, 14)
            draw.moveTo(9, 12); draw.lineTo(17, 18); draw.lineTo(12, 24); draw.lineTo(4, 21); draw.closePath()
        } else if (name === "tools") {
            draw.moveTo(6, 22); draw.lineTo(17, 11)
            draw.moveTo(21, 5); draw.arc(19, 9, 5, -0.9, 3.4, false)
        } else {
            draw.arc(14, 14, 4, 0, 2 * Math.PI)
            for (let spoke = 0; spoke < 8; ++spoke) {
                const angle = spoke * Math.PI / 4
                draw.moveTo(14 + 7 * Math.cos(angle), 14 + 7 * Math.sin(angle))
                draw.lineTo(14 + 10 * Math.cos(angle), 14 + 10 * Math.sin(angle))
            }
        }
        draw.stroke()
    }
}
