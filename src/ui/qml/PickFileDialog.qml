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
    // Our own dialog, where the desktop has none.
    property var chooser: null

    // Of several files, the first one and all of them.
    signal taken(string path, var paths)

    function report(urls: var): void {
        const paths = Array.from(urls, url => FilePaths.pathFromUrl(url));
        taken(paths[0], paths);
    }

    function ask(): void {
        if (!stays)
            currentFolder = appState.dialogFolder();
        if (OwnDialogs.host) {
            chooser = OwnDialogs.open(root, {
                name: offeredName,
                nameFilters: nameFilters,
                saving: fileMode === FileDialog.SaveFile,
                several: fileMode === FileDialog.OpenFiles
            });
            return;
        }
        selectedNameFilter.index = 0;
        if (offeredName !== "")
            selectedFile = FilePaths.inFolder(currentFolder, offeredName);
        open();
    }

    // As it was left.
    function askAgain(): void {
        (chooser ?? root).open();
    }

    function dismiss(): void {
        close();
        chooser?.close();
    }

    onAccepted: report(fileMode === FileDialog.OpenFiles ? selectedFiles : [selectedFile])
}
