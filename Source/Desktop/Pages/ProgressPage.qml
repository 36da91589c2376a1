import QtQuick
import QtQuick.Shapes

// A run: a ring with its percentage, what runs, and which step of it.
Rectangle {
    id: page
    property var screen: parent.screen
    property var places: screen.layout(width, height)
    property real shown: screen.progress
    gradient: Gradient {
        GradientStop { position: 0; color: "#17344F" }
        GradientStop { position: 1; color: "#081018" }
    }
    Behavior on shown { NumberAnimation { id: fill; duration: 900 / page.places.speed; easing.type: Easing.InOutQuad } }

    Connections {
        target: page.screen
        function onCompleting() { ending.restart() }
        function onFooterMoved(animated) {
            if (animated) {
                drift.restart()
            }
        }
    }
    Timer { id: ending; interval: 700; onTriggered: page.screen.completed() }

    Shape {
        visible: page.screen.determinate
        Accessible.role: Accessible.ProgressBar
        Accessible.name: Math.round(page.screen.progress * 100) + " %"
        x: page.places.x
        y: page.places.y
        width: page.places.side
        height: width
        ShapePath {
            strokeColor: "#4D000000"
            strokeWidth: page.places.track
            fillColor: "transparent"
            PathAngleArc {
                centerX: page.places.side / 2; centerY: page.places.side / 2
                radiusX: (page.places.side - page.places.track) / 2; radiusY: radiusX
                sweepAngle: 360
            }
        }
        ShapePath {
            strokeColor: "#24CDFE"
            strokeWidth: page.places.fill
            fillColor: "transparent"
            capStyle: ShapePath.RoundCap
            PathAngleArc {
                centerX: page.places.side / 2; centerY: page.places.side / 2
                radiusX: (page.places.side - page.places.track) / 2; radiusY: radiusX
                startAngle: -90
                sweepAngle: 360 * Math.max(page.shown, 0.0001)
            }
        }
        Text {
            anchors.centerIn: parent
            text: Math.round(page.shown * 100) + "%"
            color: "white"
            font { pixelSize: 48; weight: Font.Light }
            style: Text.Normal
        }
    }
    Text {
        anchors.horizontalCenter: parent.horizontalCenter
        width: Math.min(implicitWidth, parent.width - 32)
        y: page.places.title - height / 2
        text: page.screen.runTitle
        textFormat: Text.PlainText
        color: "white"
        wrapMode: Text.Wrap
        maximumLineCount: 2
        horizontalAlignment: Text.AlignHCenter
        elide: Text.ElideRight
        Accessible.role: Accessible.Heading
        Accessible.name: text
        font { pixelSize: page.places.titleFont; weight: Font.Light }
    }
    Text {
        id: footer
        anchors.horizontalCenter: parent.horizontalCenter
        y: page.places.footer - height / 2
        text: page.screen.footer
        textFormat: Text.PlainText
        width: Math.min(implicitWidth, parent.width - 96)
        elide: Text.ElideRight
        color: "white"
        Accessible.role: Accessible.StaticText
        Accessible.name: text
        font { pixelSize: page.places.labelFont; weight: Font.Light }
        NumberAnimation on opacity {
            id: drift
            running: false
            from: 0
            to: 1
            duration: page.places.footerDuration
        }
    }
    Shape {
        id: activity
        readonly property real side: page.screen.determinate ? footer.height : page.places.side
        visible: page.screen.spinning
        width: side
        height: side
        x: page.screen.determinate ? footer.x - 1.5 * footer.height : page.places.x
        y: page.screen.determinate ? footer.y : page.places.y
        ShapePath {
            strokeColor: "#24CDFE"
            strokeWidth: page.screen.determinate ? page.places.activityWidth : page.places.fill
            fillColor: "transparent"
            capStyle: ShapePath.RoundCap
            PathAngleArc {
                centerX: activity.side / 2; centerY: activity.side / 2
                radiusX: (activity.side - page.places.activityWidth) / 2; radiusY: radiusX
                sweepAngle: 270
            }
        }
        RotationAnimator on rotation { running: activity.visible; from: 0; to: 360; duration: 900; loops: Animation.Infinite }
    }
}
