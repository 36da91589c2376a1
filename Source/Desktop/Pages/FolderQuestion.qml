import QtQuick.Dialogs

FolderDialog {
    title: "Open the file tree of a device"
    onAccepted: chooser.chooseURL(selectedFolder)
}
