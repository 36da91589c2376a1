import QtQuick
import QtQuick.Controls.Basic

// Where a device comes from when the start names none.
Item {
    id: page
    readonly property var scheme: ApplicationWindow.window.scheme

    Flickable {
        anchors.fill: parent
        contentHeight: column.height + 48
        boundsBehavior: Flickable.StopAtBounds
        ScrollBar.vertical: ScrollBar {}
        enabled: chooser.busy === ""
        opacity: enabled ? 1 : 0.4

        Column {
            id: column
            width: Math.min(parent.width - 32, 480)
            x: (parent.width - width) / 2
            y: 32
            spacing: 20

            Text {
                width: parent.width
                text: "Ozvarine"
                color: page.scheme.text
                font { pixelSize: 32; weight: Font.Light }
                horizontalAlignment: Text.AlignHCenter
                Accessible.role: Accessible.Heading
                Accessible.name: text
            }
            Text {
                width: parent.width
                text: "Choose the file tree of a device: a mounted one, an extracted backup or a dump. Nothing is changed before you say so."
                color: page.scheme.quiet
                font.pixelSize: 13
                wrapMode: Text.Wrap
                horizontalAlignment: Text.AlignHCenter
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }
            Rectangle {
                visible: chooser.refusal !== ""
                width: parent.width
                height: refused.height + 24
                radius: 12
                color: page.scheme.card
                border.color: page.scheme.danger
                Accessible.role: Accessible.AlertMessage
                Accessible.name: chooser.refusal
                Column {
                    id: refused
                    x: 16
                    y: 12
                    width: parent.width - 32
                    spacing: 8
                    Text {
                        width: parent.width
                        text: chooser.refusal
                        color: page.scheme.text
                        font.pixelSize: 13
                        wrapMode: Text.Wrap
                        textFormat: Text.PlainText
                    }
                    BarAction {
                        visible: chooser.canUseDefaults
                        scheme: page.scheme
                        text: "Keep that file under another name and use the defaults"
                        onClicked: chooser.useDefaults()
                    }
                }
            }
            ChoiceCard {
                width: parent.width
                scheme: page.scheme
                title: "Recent devices"
                choices: chooser.recent
                onChosen: (folder) => chooser.choose(folder)
            }
            ChoiceCard {
                width: parent.width
                scheme: page.scheme
                title: "Mounted on this computer"
                choices: chooser.mounted
                onChosen: (folder) => chooser.choose(folder)
            }
            ChoiceCard {
                width: parent.width
                scheme: page.scheme
                choices: [
                    { folder: "open", title: "Open a folder…", detail: "Or drop one on this window" },
                    { folder: "demo", title: "Try a demo device", detail: "Made for playing; nothing of yours is in it" }
                ]
                onChosen: (folder) => folder === "demo" ? chooser.tryDemoDevice() : dialog.ask()
            }
        }
    }

    Loader {
        id: dialog
        function ask() {
            source = "FolderQuestion.qml"
            item.open()
        }
    }

    Column {
        visible: chooser.busy !== ""
        anchors.centerIn: parent
        spacing: 12
        BusyIndicator { anchors.horizontalCenter: parent.horizontalCenter; running: parent.visible }
        Text {
            text: chooser.busy
            color: page.scheme.text
            font.pixelSize: 16
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
    }

    DropArea {
        anchors.fill: parent
        onDropped: (drop) => { if (drop.hasUrls) chooser.chooseURL(drop.urls[0]) }
        Rectangle {
            anchors { fill: parent; margins: 8 }
            visible: parent.containsDrag
            radius: 12
            color: "transparent"
            border { width: 3; color: page.scheme.tint }
        }
    }
}
