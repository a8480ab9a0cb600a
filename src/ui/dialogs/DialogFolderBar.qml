pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Dialogs.quickimpl as Dialogs
import KvtEditor

// The bar of folders in Qt's own dialogs for files and folders, whose buttons would take a folder's name for
// markup. It also corrects the choice: left alone, a dialog chooses the first entry of each folder it
// shows or rereads. Save would then overwrite a file other than the one named, and Open take a file other
// than the one chosen, or a folder below the one shown.
Dialogs.FolderBreadcrumbBar {
    id: root

    readonly property Dialogs.FileDialogImpl fileDialog: dialog as Dialogs.FileDialogImpl
    readonly property Dialogs.FolderDialogImpl folderDialog: dialog as Dialogs.FolderDialogImpl
    readonly property url place: fileDialog?.currentFolder ?? folderDialog?.currentFolder ?? ""
    readonly property string placePath: "/" + FilePaths.pathFromUrl(place)
    readonly property ListView list: fileDialog?.Dialogs.FileDialogImpl.fileDialogListView
        ?? folderDialog?.Dialogs.FolderDialogImpl.folderDialogListView ?? null
    // Open or Save.
    property Item accepting: null
    readonly property TextField nameField: fileDialog?.Dialogs.FileDialogImpl.fileNameTextField ?? null
    // The name field is seen in a dialog for saving only.
    readonly property bool saving: nameField?.visible === true
    // What to save as, whichever folder is shown: a name there, or a path from the root.
    property string fileName
    // What to save as if the name that was typed since turns out to be a folder's.
    property string earlierName
    // The folder that was shown last, and the file that `fileName` meant there.
    property url lastFolder
    property url namedFile
    // What the name field shows. The dialog would show the last part of a path alone.
    property string shownName
    // Whether the chosen row has to be found again, in a folder that is being read anew.
    property bool remarking: false
    // Whether the keyboard belongs to the name.
    property bool naming: false
    // Whether the path's field is choosing.
    property bool takingPath: false

    // Any text that contains a file's name would be taken for markup.
    function makePlain(item: Item): void {
        for (const child of Array.from(item.children))
            makePlain(child);
        if (item instanceof Text)
            item.textFormat = Text.PlainText;
    }

    function begin(): void {
        const answers = fileDialog?.Dialogs.FileDialogImpl.buttonBox ?? folderDialog.footer;
        accepting = answers.standardButton(DialogButtonBox.Open) ?? answers.standardButton(DialogButtonBox.Save);
        fileName = fileDialog?.fileName ?? "";
        earlierName = fileName;
        lastFolder = fileDialog?.currentFolder ?? "";
        shownName = fileName;
        remarking = false;
        naming = false;
        // Rows that are being made out of sight when a folder is left make Qt 6.11 warn.
        list.cacheBuffer = 0;
        enterFolder();
    }

    // The dialog can be accepted only once it has a current row.
    function markAll(): void {
        const first = Array.from({ length: list.count }, (_, row) => row).find(row => !list.model.isFolder(row));
        if (first === undefined)
            return;
        MarkedFiles.press(list.model, first, Qt.NoModifier);
        MarkedFiles.markRows(list.model, first, list.count - 1);
        list.currentIndex = first;
    }

    // What is typed next replaces the name up to its suffix.
    function offerName(): void {
        if (!saving)
            return;
        const dot = nameField.text.lastIndexOf(".");
        nameField.persistentSelection = true;
        nameField.forceActiveFocus(Qt.TabFocusReason);
        nameField.select(0, dot > 0 ? dot : nameField.text.length);
        naming = true;
    }

    function enterFolder(): void {
        MarkedFiles.clear();
        correct();
        correction.start();
    }

    function chosen(): url {
        return fileDialog?.selectedFile ?? folderDialog?.selectedFolder;
    }

    function isRowChosen(): bool {
        // From Qt 6.8 on, the one address is encoded and the other is not.
        return list.currentItem !== null && FilePaths.pathFromUrl(list.currentItem.file) === FilePaths.pathFromUrl(chosen());
    }

    // Mouse and keys choose the row that they mark, and a path chooses what it names. All other choices are
    // the dialog's own. They are taken back at once, for one may be made on the way to saving. A folder's row
    // names nothing to save as.
    function chooseFile(): void {
        if (takingPath)
            return;
        const row = list.currentItem;
        if (row)
            MarkedFiles.choose(row.file, list.currentIndex);
        if (!isRowChosen()) {
            correct();
        } else {
            naming = nameField?.activeFocus === true;
            shownName = row.fileName;
            if (!row.fileIsDir)
                fileName = earlierName = row.fileName;
        }
        correction.start();
    }

    function rename(): void {
        fileName = nameField.text;
        correct();
    }

    function correct(): void {
        if (folderDialog) {
            folderDialog.selectedFolder = folderDialog.currentFolder;
        } else if (saving) {
            takeAlong();
            shownName = fileName;
            // The dialog would decode a name, and the folder with it: so it gets the whole url.
            namedFile = fileName ? FilePaths.fromTyped(fileDialog.currentFolder, app.expandedPath(fileName)) : "";
            fileDialog.selectedFile = namedFile;
        } else if (fileDialog.visible) {
            fileDialog.selectedFile = "";
        }
    }

    // A name goes along into another folder, but not into the one that it turned out to name.
    function takeAlong(): void {
        const folder = fileDialog.currentFolder;
        if (String(folder) === String(lastFolder))
            return;
        if (String(folder) === String(namedFile))
            fileName = earlierName;
        earlierName = fileName;
        lastFolder = folder;
    }

    // Without a current row of its own choice the list would mark the first one, and the dialog choose it.
    function loseRows(): void {
        remarking = remarking || isRowChosen();
        list.currentIndex = -1;
    }

    // Dialogs hand the keyboard to the row of the offered name once that is listed, and Qt 6.11 also to the row that
    // was current.
    function isKeyboardHanded(): bool {
        const row = list.currentItem;
        return row !== null && row.activeFocus && row.focusReason === Qt.OtherFocusReason;
    }

    // What is marked is what is chosen. A click on the row that is the current one already would choose
    // nothing, and a key would enter the row that has the focus.
    function mark(): void {
        naming = nameField?.activeFocus === true || (naming && isKeyboardHanded());
        if (remarking)
            list.currentIndex = list.model.indexOf(chosen());
        remarking = false;
        if (!isRowChosen()) {
            if (list.currentItem)
                list.currentItem.focus = false;
            list.currentIndex = -1;
            correct();
        }
        if (naming)
            nameField.forceActiveFocus();
    }

    // The dialog closes the path's field by itself, but opens it again when a row took the focus meanwhile.
    function leavePath(): void {
        takingPath = false;
        list.forceActiveFocus();
    }

    implicitHeight: contentItem.implicitHeight + topPadding + bottomPadding
    padding: 1
    upButtonSpacing: 20

    background: Rectangle {
        color: VOXTheme.input
        border.color: VOXTheme.border
    }

    contentItem: ListView {
        implicitHeight: 40
        currentIndex: root.currentIndex
        model: root.contentModel
        orientation: ListView.Horizontal
        snapMode: ListView.SnapToItem
        highlightMoveDuration: 0
        interactive: false
        clip: true
    }

    buttonDelegate: Button {
        id: button

        required property int index
        required property string folderName

        text: folderName
        flat: true
        implicitWidth: Math.min(implicitContentWidth + 16, 300)
        implicitHeight: 40
        Accessible.name: folderName

        contentItem: Text {
            text: button.folderName
            textFormat: Text.PlainText
            font: button.font
            color: VOXTheme.text
            elide: Text.ElideMiddle
            maximumLineCount: 1
            horizontalAlignment: Text.AlignHCenter
            verticalAlignment: Text.AlignVCenter
            Accessible.ignored: true
        }
    }

    separatorDelegate: Text {
        height: root.contentItem.height
        text: "›"
        textFormat: Text.PlainText
        color: VOXTheme.muted
        verticalAlignment: Text.AlignVCenter
        Accessible.ignored: true
    }

    upButton: ToolButton {
        objectName: "upButton"
        x: root.leftPadding
        y: root.topPadding
        width: height
        focusPolicy: Qt.TabFocus
        icon.source: "qrc:/qt-project.org/imports/QtQuick/Dialogs/quickimpl/images/up-icon-round.png"
        icon.width: 16
        icon.height: 16
        Accessible.name: "Parent folder"
    }

    textField: TextField {
        text: root.place
        Accessible.name: "Path"
        // An empty one would be taken for a choice.
        validator: RegularExpressionValidator { regularExpression: /[\s\S]+/ }
        // Ahead of the dialog, which accepts it next.
        onAccepted: {
            root.takingPath = true;
            Qt.callLater(root.leavePath);
        }
    }

    // The palette of a dialog has no colours for what is disabled.
    Binding {
        target: root.accepting
        property: "opacity"
        value: root.accepting?.enabled ? 1 : 0.45
    }

    Component.onCompleted: {
        // From Qt 6.8 on, the one for folders shows its title in a window of its own only.
        for (const sibling of Array.from(parent.children))
            sibling.visible = true;
        // From Qt 6.8 on, the one for saving asks before it writes over a file.
        const question = fileDialog?.Dialogs.FileDialogImpl.overwriteConfirmationDialog;
        if (question)
            makePlain(question.contentItem);
        else if (fileDialog)
            FilePaths.dialogAsks = false;
    }

    // Qt 6.4 and 6.8 let the user work on below a dialog that stands inside the window.
    Binding {
        target: root.dialog
        property: "modal"
        value: true
    }

    // A press outside must not close it: it may be the second of the double click that opened it.
    Binding {
        target: root.dialog
        property: "closePolicy"
        value: Popup.CloseOnEscape
    }

    Connections {
        target: root.dialog
        function onVisibleChanged(): void {
            if (root.dialog.visible)
                root.begin();
        }
        function onOpened(): void {
            root.offerName();
        }
    }

    Connections {
        target: root.fileDialog
        function onCurrentFolderChanged(): void {
            root.enterFolder();
        }
        function onSelectedFileChanged(): void {
            root.chooseFile();
        }
    }

    Connections {
        target: root.folderDialog
        function onCurrentFolderChanged(): void {
            root.enterFolder();
        }
    }

    Binding {
        target: root.nameField
        property: "text"
        value: root.shownName
    }

    Connections {
        target: root.nameField
        function onTextEdited(): void {
            root.rename();
        }
        // Between the press and the release on a row, nothing is corrected.
        function onActiveFocusChanged(): void {
            if (root.isKeyboardHanded())
                correction.start();
            else
                root.naming = root.nameField.activeFocus;
        }
        function onAccepted(): void {
            if (root.accepting.enabled)
                root.accepting.clicked();
        }
    }

    // The list takes the path for an address once more, and so looks in vain for a folder whose name has "#", "?" or an
    // escape in it.
    Binding {
        target: root.list?.model ?? null
        property: "folder"
        value: /[#?%]/.test(root.placePath) ? FilePaths.fromTyped("", root.placePath).replace(/%/g, "%25") : root.place
    }

    Shortcut {
        sequences: [StandardKey.SelectAll]
        enabled: MarkedFiles.several && root.dialog.visible
        onActivated: root.markAll()
    }

    // TRUCK.KVT is a tune file, too.
    Binding {
        target: root.list?.model ?? null
        property: "caseSensitive"
        value: false
    }

    Connections {
        target: root.list
        function onCurrentItemChanged(): void {
            correction.start();
        }
    }

    Connections {
        target: root.list?.model ?? null
        function onRowsAboutToBeRemoved(): void {
            root.loseRows();
        }
        function onRowsInserted(): void {
            correction.start();
        }
    }

    // Not within the dialog's own signals, where it is still marking its choice.
    Timer {
        id: correction
        interval: 0
        onTriggered: {
            if (root.dialog.visible)
                root.mark();
        }
    }
}
