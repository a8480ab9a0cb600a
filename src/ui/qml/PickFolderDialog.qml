import QtQuick.Dialogs
import KvtEditor

// Asks for a folder and reports its path. Opens in the folder of the open file.
FolderDialog {
    id: root

    readonly property AppState appState: app // qmllint disable unqualified
    // Opens in the dialog's current folder instead.
    property bool stays: false

    signal taken(string path)

    function ask(): void {
        MarkedFiles.begin(false);
        if (!stays)
            currentFolder = appState.dialogFolder();
        open();
    }

    onAccepted: taken(FilePaths.pathFromUrl(selectedFolder))
}
