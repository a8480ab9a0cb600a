pragma Singleton

import QtQuick

// Opens our own dialogs for files and folders.
QtObject {
    // What shows them; null where the desktop has dialogs.
    property Item host: null

    // Asks in place of `asker`, a dialog of Qt's. The URLs go to its `report`, the last folder to its `currentFolder`.
    // The dialog's type is loaded when it is first needed.
    function open(asker: var, wishes: var): var {
        asker.chooser?.destroy();
        let path = "/" + FilePaths.pathFromUrl(asker.currentFolder);
        while (path !== "" && !asker.appState.isFolder(path))
            path = path.slice(0, path.lastIndexOf("/"));
        const all = Object.assign(wishes, { title: asker.title, path: path || "/" });
        const properties = { asker: asker, properties: all };
        return Qt.createComponent("ChooserPopup.qml").createObject(host, properties);
    }
}
