import QtQuick
import KvtEditor

// The controller's status. Set again, it fades in, even with the same text; while something is at work, what was said
// before is dimmed. Hovering over a failure explains it.
StatusLine {
    id: root

    readonly property AppState appState: app // qmllint disable unqualified
    readonly property bool working: appState.busy || appState.searchBusy || appState.transfers().running
    // Whether it was said just now, perhaps about what begins next.
    readonly property bool fresh: justNow.running
    property bool outdated: false
    property real fade: 1
    property string help

    function take(): void {
        outdated = false;
        justNow.restart();
        help = appState.statusOK === 0 ? appState.statusHelp() : "";
        appearance.restart();
    }

    // Of a text without end only so much is laid out as could ever be in sight.
    text: appState.status.slice(0, 2000)
    ok: appState.statusOK
    opacity: outdated ? 0.6 * fade : fade
    elide: Text.ElideRight
    Accessible.description: help
    onWorkingChanged: outdated = working && !fresh
    Component.onCompleted: take()

    Connections {
        target: root.appState
        function onStatusChanged(): void {
            root.take();
        }
    }

    Timer {
        id: justNow
        interval: 0
    }

    NumberAnimation {
        id: appearance
        target: root
        property: "fade"
        from: 0.2
        to: 1
        duration: 200
    }

    HoverHandler {
        id: hover
    }

    VOXToolTip {
        objectName: "statusToolTip"
        visible: hover.hovered && fullText !== ""
        fullText: (root.truncated ? root.appState.status + (root.help === "" ? "" : "\n\n") : "") + root.help
        y: root.mapToItem(null, 0, 0).y > height ? -height - 8 : root.height + 8
    }
}
