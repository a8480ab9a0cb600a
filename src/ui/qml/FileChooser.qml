pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import KvtEditor

// Asks for a file, for several, for a folder, or where to save, where the desktop has no dialog for it. Unless rows are
// marked, what counts is the text below the list: a name, a path, also one from "~", or a file's URL.
ColumnLayout {
    id: root

    required property string title
    // The folder that is shown: its path from the root, and its URL.
    property alias path: files.path
    readonly property string folderUrl: FilePaths.urlOf(path)
    // What to save as: the last name that was offered, pressed, or typed before another folder was entered.
    property string name
    // As those of FileDialog.
    property var nameFilters: ["All files (*)"]
    property bool saving: false
    property bool several: false
    property alias wantsFolder: files.foldersOnly
    // The names of the marked rows: files, or one folder. Shift marks from the anchor.
    property var marked: []
    readonly property var markedNames: new Set(marked)
    property bool marksFolder: false
    property string anchor
    // The name of the row that the keyboard is on.
    property string current
    // Whether what was typed is no folder.
    property bool folderMissing: false
    readonly property AppState appState: app // qmllint disable unqualified

    // With the URLs of the files, or of the folder.
    signal chosen(var urls)
    signal cancelled()

    // What is typed next replaces the name up to its suffix.
    function begin(): void {
        if (!saving) {
            list.forceActiveFocus(Qt.TabFocusReason);
            return;
        }
        const dot = nameField.text.lastIndexOf(".");
        nameField.forceActiveFocus(Qt.TabFocusReason);
        nameField.select(0, dot > 0 ? dot : nameField.text.length);
    }

    // A folder is marked alone.
    function mark(row: int, modifiers: int): void {
        const name = files.nameAt(row);
        const start = several && modifiers & Qt.ShiftModifier ? files.rowOf(anchor) : -1;
        current = name;
        if (start >= 0) {
            markRows(Math.min(start, row), Math.max(start, row));
            return;
        }
        const adds = several && modifiers & Qt.ControlModifier && !marksFolder && !files.isFolder(row);
        const others = adds ? marked.filter(other => other !== name) : [];
        marksFolder = files.isFolder(row);
        marked = adds && others.length < marked.length ? others : [...others, name];
        anchor = name;
        showMarked();
    }

    // Both rows and all files in between.
    function markRows(first: int, last: int): void {
        const rows = Array.from({ length: last - first + 1 }, (_, index) => first + index);
        marked = rows.filter(row => !files.isFolder(row)).map(row => files.nameAt(row));
        marksFolder = false;
        showMarked();
    }

    // A folder's row names nothing to save as.
    function showMarked(): void {
        if (!saving)
            nameField.text = marked.length > 1 ? marked.length + " files" : marked.join();
        else if (!marksFolder && marked.length > 0)
            nameField.text = name = marked[0];
    }

    // The rows are made anew whenever the folder changes on disk.
    function followMarks(): void {
        const left = marked.filter(other => files.rowOf(other) >= 0);
        if (left.length < marked.length) {
            marked = left;
            showMarked();
        }
        list.currentIndex = files.rowOf(current);
    }

    // A name that was typed goes along, but not into the folder that it turned out to name.
    function goTo(folder: string, typed: bool): void {
        if (saving && !typed)
            name = nameField.text;
        nameField.text = name;
        if (!nameField.activeFocus)
            list.forceActiveFocus(Qt.TabFocusReason);
        marked = [];
        marksFolder = false;
        anchor = current = "";
        path = folder;
    }

    function enterRow(row: int): void {
        if (files.isFolder(row))
            goTo(path + "/" + files.nameAt(row), false);
        else if (row >= 0)
            accept();
    }

    function typedPath(): string {
        const text = nameField.text;
        const isUrl = text.startsWith("file:///");
        return files.pathOf(isUrl ? "/" + FilePaths.pathFromUrl(text) : appState.expandedPath(text));
    }

    function accept(): void {
        const typed = marked.length === 0 && nameField.text !== "";
        if (!typed && marked.length === 0 && !wantsFolder)
            return;
        const urls = typed ? [FilePaths.urlOf(typedPath())]
            : marked.length > 0 ? marked.map(one => FilePaths.inFolder(folderUrl, one)) : [folderUrl];
        const first = "/" + FilePaths.pathFromUrl(urls[0]);
        const isFolder = appState.isFolder(first);
        folderMissing = wantsFolder && !isFolder;
        if (isFolder && (typed || !wantsFolder))
            goTo(first, typed);
        else if (!folderMissing)
            chosen(urls);
    }

    // A key that is held accepts once.
    function acceptByKey(event: var): void {
        if (!event.isAutoRepeat)
            accept();
    }

    spacing: 10

    Accessible.role: Accessible.Dialog
    Accessible.name: title

    FolderRows {
        id: files
        patterns: /\((.*)\)/.exec(root.nameFilters[Math.max(0, filterBox.currentIndex)])[1].split(" ")
        key: columnHeading.sortKey
        descending: columnHeading.descending
        onModelReset: root.followMarks()
    }

    VOXLabel {
        text: root.title
        color: VOXTheme.orange
        font { pixelSize: 16; bold: true }
        Layout.fillWidth: true
        Accessible.role: Accessible.Heading
    }

    ChooserFolders {
        path: root.path
        onWanted: folder => root.goTo(folder, false)
        Layout.fillWidth: true
    }

    ListHeading {
        id: columnHeading
        objectName: "chooserHeading"
        sortable: true
        rowWidth: list.rowWidth
        columns: [
            ListColumn { key: "name"; title: "Name" },
            ListColumn { key: "size"; title: "Size"; width: 90 },
            ListColumn { key: "modified"; title: "Modified"; width: 150 }
        ]
    }

    VOXList {
        id: list
        objectName: "chooserList"
        name: root.wantsFolder ? "Folders" : "Folders and files"
        model: files
        Layout.fillWidth: true
        Layout.fillHeight: true
        onChosen: row => root.enterRow(row)
        // With Ctrl, keys only move, and the space bar marks.
        onMovedByKey: modifiers => {
            root.current = files.nameAt(currentIndex);
            if (!root.several || !(modifiers & Qt.ControlModifier))
                root.mark(currentIndex, modifiers);
        }
        Keys.onSpacePressed: {
            if (currentIndex >= 0)
                root.mark(currentIndex, Qt.ControlModifier);
        }
        // What is typed is a name.
        Keys.onPressed: event => {
            const isCommand = event.modifiers & (Qt.ControlModifier | Qt.AltModifier | Qt.MetaModifier);
            if (isCommand || !/^[^\x00-\x20\x7f]/.test(event.text))
                return;
            root.marked = [];
            nameField.forceActiveFocus(Qt.TabFocusReason);
            nameField.text = event.text;
            event.accepted = true;
        }

        delegate: ChooserRow {
            heading: columnHeading
            marked: root.markedNames.has(name)
            onPressed: modifiers => {
                list.forceActiveFocus(Qt.MouseFocusReason);
                list.currentIndex = index;
                root.mark(index, modifiers);
            }
            onEntered: root.enterRow(index)
        }

        VOXLabel {
            objectName: "chooserEmptyLine"
            parent: list
            x: columnHeading.margin
            y: 10
            visible: list.count === 0
            text: files.reading ? "Reading ..." : "Nothing to show here."
        }
    }

    RowLayout {
        spacing: 10

        VOXField {
            id: nameField
            objectName: "chooserName"
            placeholderText: root.wantsFolder ? "Path" : "Name or path"
            unlimitedLength: true
            text: root.name
            Layout.fillWidth: true
            onTextEdited: root.marked = []
            onTextChanged: root.folderMissing = false
            Keys.onReturnPressed: event => root.acceptByKey(event)
            Keys.onEnterPressed: event => root.acceptByKey(event)
            Keys.onDownPressed: list.forceActiveFocus(Qt.TabFocusReason)
        }

        VOXComboBox {
            id: filterBox
            objectName: "chooserFilter"
            visible: count > 1
            model: root.nameFilters
            Layout.preferredWidth: 190
            Accessible.name: "Files shown"
        }
    }

    RowLayout {
        spacing: 10

        VOXLabel {
            objectName: "chooserFolderMissing"
            text: root.folderMissing ? "There is no such folder." : ""
            color: VOXTheme.error
            Layout.fillWidth: true
            Accessible.role: Accessible.AlertMessage
        }

        VOXButton {
            text: "Cancel"
            Layout.fillWidth: false
            Layout.preferredWidth: 140
            onClicked: root.cancelled()
        }

        VOXButton {
            objectName: "chooserAccept"
            orange: true
            text: root.saving ? "Save" : "Open"
            enabled: root.wantsFolder || root.marked.length > 0 || nameField.text !== ""
            Layout.fillWidth: false
            Layout.preferredWidth: 140
            onClicked: root.accept()
        }
    }

    Shortcut {
        sequence: "Alt+Up"
        enabled: root.visible
        onActivated: root.goTo(root.path + "/..", false)
    }

    Shortcut {
        sequence: "Ctrl+A"
        enabled: root.several && list.activeFocus
        onActivated: root.markRows(0, list.count - 1)
    }
}
