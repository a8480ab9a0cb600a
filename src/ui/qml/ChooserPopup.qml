import QtQuick
import KvtEditor

// The dialog around a FileChooser. Kept after it is closed, it opens again as it was left.
VOXPopup {
    id: root

    // The dialog of Qt's in whose place it asks.
    required property var asker
    // The chooser's properties, by their names.
    required property var properties
    readonly property FileChooser chooser: loader.item as FileChooser

    width: Math.min(860, parent ? parent.width - 80 : 0)
    height: Math.min(600, parent ? parent.height - 80 : 0)
    onOpened: chooser.begin()
    Component.onCompleted: {
        loader.setSource("FileChooser.qml", properties);
        open();
    }

    // Rows that are deleted with the dialog itself would warn about the heading, which is gone by then.
    Loader {
        id: loader
        anchors.fill: parent
    }

    Connections {
        target: root.chooser
        function onChosen(urls: var): void {
            root.close();
            if (!root.properties.wantsFolder)
                root.asker.currentFolder = urls[0].replace(/\/[^/]*$/, "");
            root.asker.report(urls);
        }
        function onCancelled(): void {
            root.close();
        }
        function onFolderUrlChanged(): void {
            root.asker.currentFolder = root.chooser.folderUrl;
        }
    }
}
