import QtQuick.Dialogs
import KvtEditor

// Asks for a folder, and tells its path. It opens where files were last taken from.
FolderDialog {
    id: root

    readonly property AppState appState: app // qmllint disable unqualified
    // Opens in its current folder instead.
    property bool stays: false

    signal taken(string path)

    function ask(): void {
        if (!stays)
            currentFolder = appState.dialogFolder();
        open();
    }

    onAccepted: taken(FilePaths.pathFromUrl(selectedFolder))
}
