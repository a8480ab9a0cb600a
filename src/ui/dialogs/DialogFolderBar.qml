pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Dialogs.quickimpl as Dialogs
import KvtEditor

// The bar of folders in Qt's own file dialogs, whose buttons would take a folder's name for markup. It also sees
// to what is chosen: left alone, a dialog chooses the first entry of each folder it shows. Save would then write
// over another file than the one that was named.
Dialogs.FolderBreadcrumbBar {
    id: root

    readonly property Dialogs.FileDialogImpl fileDialog: dialog as Dialogs.FileDialogImpl
    readonly property Dialogs.FolderDialogImpl folderDialog: dialog as Dialogs.FolderDialogImpl
    readonly property url place: fileDialog?.selectedFile ?? folderDialog?.currentFolder ?? ""
    readonly property ListView list: fileDialog?.Dialogs.FileDialogImpl.fileDialogListView ?? null
    // Seen in a dialog for saving only.
    readonly property TextField nameField: fileDialog?.Dialogs.FileDialogImpl.fileNameTextField ?? null
    // What to save as, whichever folder is shown.
    property string fileName
    // Whether a row is being chosen by mouse or keys; all other choices are the dialog's own.
    property bool byHand: false

    function begin(): void {
        fileName = nameField?.text ?? "";
        enterFolder();
    }

    function enterFolder(): void {
        byHand = false;
        correction.start();
    }

    // A folder's row stays chosen: taken back, the keys would not get past it. It names nothing to save as.
    function chooseRow(): void {
        const row = list.currentItem;
        if (byHand && row?.fileIsDir === false && row.file === fileDialog.selectedFile)
            fileName = row.fileName;
        correction.start();
    }

    function rename(): void {
        fileName = nameField.text;
        byHand = false;
        correct();
    }

    // The dialog would decode a name, and the folder with it: so it gets the whole url.
    function correct(): void {
        if (byHand || !nameField?.visible)
            return;
        fileDialog.selectedFile = fileName ? FilePaths.inFolder(fileDialog.currentFolder, fileName) : "";
        // A click on the row that is the current one already would choose nothing.
        list.currentIndex = -1;
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
    }

    Connections {
        target: root.dialog
        function onAboutToShow(): void {
            root.begin();
        }
    }

    Connections {
        target: root.fileDialog
        function onCurrentFolderChanged(): void {
            root.enterFolder();
        }
        function onSelectedFileChanged(): void {
            root.chooseRow();
        }
    }

    Connections {
        target: root.nameField
        function onTextEdited(): void {
            root.rename();
        }
    }

    Connections {
        target: root.list
        function onCurrentItemChanged(): void {
            correction.start();
        }
    }

    Connections {
        target: root.list?.Keys ?? null
        function onPressed(): void {
            root.byHand = true;
        }
    }

    PointHandler {
        parent: root.list
        onActiveChanged: root.byHand = root.byHand || active
    }

    // Not within the dialog's own signals, where it is still making its choice.
    Timer {
        id: correction
        interval: 0
        onTriggered: {
            if (root.dialog.visible)
                root.correct();
        }
    }
}
