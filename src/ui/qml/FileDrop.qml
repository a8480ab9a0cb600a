import QtQuick
import KvtEditor

// Takes what is dropped on its parent, one tune file unless told otherwise, and is framed while that hovers.
// Anything else is refused, and falls to whatever lies below.
DropArea {
    id: root

    property bool folder: false
    property bool several: false
    property bool anyFile: false
    // What the frame is drawn on, and where it begins there.
    property Item framed: root
    property real frameTop: 0
    readonly property AppState appState: app // qmllint disable unqualified
    readonly property VOXWindow host: Window.window as VOXWindow

    // Paths as the dialogs give them.
    signal taken(var paths)

    // Of several files those that fit, without a look at the disk, which may be far away.
    function fits(path: string): bool {
        if (folder)
            return appState.isFolder(path);
        if (anyFile)
            return !appState.isFolder(path);
        return appState.isKvtFile(path) && (several || !appState.isFolder(path));
    }

    // Whatever is not of this computer has no path.
    function wantedPaths(urls: var): var {
        if (urls.length > 1 && !several)
            return [];
        const local = Array.from(urls).filter(url => String(url).toLowerCase().startsWith("file:///"));
        return local.map(url => FilePaths.pathFromUrl(url)).filter(path => fits(path));
    }

    // A copy is asked for, whatever keys are held: after a move the file manager would remove the file.
    onEntered: drag => {
        if (!host.asking() && wantedPaths(drag.urls).length > 0)
            drag.accept(Qt.CopyAction);
        else
            drag.accepted = false;
    }
    onPositionChanged: drag => drag.accept(Qt.CopyAction)
    onDropped: drop => {
        const paths = wantedPaths(drop.urls);
        drop.accept(paths.length > 0 ? Qt.CopyAction : Qt.IgnoreAction);
        if (paths.length > 0)
            taken(paths);
    }

    Rectangle {
        objectName: "dropFrame"
        parent: root.framed
        anchors { fill: parent; topMargin: root.frameTop }
        visible: root.containsDrag
        radius: VOXTheme.radiusControl
        color: VOXTheme.accent(0.15)
        border.width: 2
        border.color: VOXTheme.orangeBright
    }
}
