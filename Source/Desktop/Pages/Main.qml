import QtQuick
import QtQuick.Controls.Basic

// The window: a bar, the page of the screen that is shown, the tabs, and dialogs over all of it.
ApplicationWindow {
    id: window
    width: 375
    height: 667
    minimumWidth: 360
    minimumHeight: 480
    visible: true
    color: scheme.background

    property Scheme scheme: Scheme {}
    onClosing: (close) => { close.accepted = chooser.windowShouldClose() }
    readonly property bool isProgress: host.screen !== null && host.screen.kind === "progress"

    Connections {
        target: host
        function onAlertChanged() { Qt.callLater(content.takeFocus) }
        function onMoved(kind, animated) {
            const kinds = { table: "TablePage.qml", progress: "ProgressPage.qml", text: "TextPage.qml" }
            const page = pages.createObject(content, { source: kinds[host.screen.kind], screen: host.screen })
            content.follow(page, kind, animated)
        }
    }

    Component {
        id: pages
        Loader {
            property var screen
            anchors.fill: undefined
            width: content.width
            height: content.height
            onWidthChanged: notePlace()
            onHeightChanged: notePlace()
            Component.onCompleted: notePlace()
            function notePlace() { screen.notePlace(content.x, content.y, width, height) }
        }
    }

    Item {
        id: content
        anchors.fill: parent
        anchors.topMargin: window.isProgress ? 0 : bar.height
        anchors.bottomMargin: tabs.visible && !tabs.isWide ? tabs.height : 0
        anchors.leftMargin: tabs.visible && tabs.isWide ? tabs.width : 0
        clip: true
        enabled: !move.running && host.alert === null

        property QtObject current: null
        property QtObject old: null

        function follow(page, kind, animated) {
            old = current
            current = page
            const horizontal = { 1: 1, 2: -1, 5: 1, 6: -1 }
            const vertical = { 3: 1, 4: -1 }
            move.stop()
            if (!animated || !settings.animated || old === null) {
                finish()
                return
            }
            move.page = page
            leaving.target = old
            if (kind in horizontal) {
                move.key = "x"
                page.x = horizontal[kind] * content.width
                move.toOld = -horizontal[kind] * content.width
            } else {
                move.key = "y"
                page.y = kind === 3 ? content.height : 0
                move.toOld = kind === 4 ? content.height : 0
                if (kind === 4) {
                    old.z = 1
                }
            }
            move.start()
        }

        function finish() {
            if (old !== null) {
                old.destroy()
                old = null
            }
            current.x = 0
            current.y = 0
            Qt.callLater(takeFocus)
            host.transitionDone()
        }

        // Keys belong to the page, unless a dialog is above it.
        function takeFocus() {
            if (host.alert === null && current !== null && current.item !== null) {
                current.item.forceActiveFocus()
            }
        }

        ParallelAnimation {
            id: move
            property QtObject page: null
            property string key: "x"
            property real toOld: 0
            NumberAnimation { target: move.page; property: move.key; to: 0; duration: 250; easing.type: Easing.OutCubic }
            NumberAnimation {
                id: leaving; property: move.key; to: move.toOld; duration: 250; easing.type: Easing.OutCubic
            }
            onFinished: content.finish()
        }
    }

    NavigationBar {
        id: bar
        visible: chooser.open && !window.isProgress
        enabled: !move.running && host.alert === null
        scheme: window.scheme
        anchors { left: parent.left; right: parent.right; leftMargin: content.anchors.leftMargin }
        screen: host.screen
    }

    TabStrip {
        id: tabs
        scheme: window.scheme
        isWide: window.width >= 700
        anchors.bottom: parent.bottom
        width: isWide ? 200 : parent.width
        height: isWide ? parent.height : 50
        visible: host.tabsVisible
        enabled: !move.running && host.alert === null
    }

    Loader {
        anchors.fill: parent
        active: !chooser.open
        source: "ChooserPage.qml"
    }

    Alert {
        anchors.fill: parent
        scheme: window.scheme
        alert: host.alert
    }
}
