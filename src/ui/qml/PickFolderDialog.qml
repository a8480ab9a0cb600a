import QtQuick.Dialogs
import KvtEditor

// Asks for a folder and reports its path. Opens in the folder of the open file.
FolderDialog {
    id: root

    readonly property AppState appState: app // qmllint disable unqualified
    // Opens in the dialog's current folder instead.
    property bool stays: false
    // Our own dialog, where the desktop has none.
    property var chooser: null

    signal taken(string path)

    function report(urls: var): void {
        taken(FilePaths.pathFromUrl(urls[0]));
    }

    function ask(): void {
        if (!stays)
            currentFolder = appState.dialogFolder();
        if (OwnDialogs.host)
            chooser = OwnDialogs.open(root, { wantsFolder: true });
        else
            open();
    }

    onAccepted: report([selectedFolder])
}
