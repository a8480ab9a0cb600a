import QtQuick.Dialogs
import KvtEditor

// Asks for a file and reports its path. Opens in the folder of the open file.
FileDialog {
    id: root

    readonly property AppState appState: app // qmllint disable unqualified
    // Opens in the dialog's current folder instead.
    property bool stays: false
    // The name to offer for a file that will be written.
    property string offeredName

    signal taken(string path)

    function ask(): void {
        MarkedFiles.begin(fileMode === FileDialog.OpenFiles);
        selectedNameFilter.index = 0;
        if (!stays)
            currentFolder = appState.dialogFolder();
        if (offeredName !== "")
            selectedFile = FilePaths.inFolder(currentFolder, offeredName);
        open();
    }

    // All of them, where the dialog takes several.
    function paths(): var {
        const urls = MarkedFiles.files.length > 0 ? MarkedFiles.files : selectedFiles;
        return Array.from(urls, url => FilePaths.pathFromUrl(url));
    }

    onAccepted: taken(FilePaths.pathFromUrl(selectedFile))
}
