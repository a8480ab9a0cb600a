pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import KvtEditor

// The main window: sidebar, header, the current view, status line, and the hex editor above them all.
VOXWindow {
    id: root

    readonly property AppState appState: app // qmllint disable unqualified
    // In the order of the sidebar. The first view is made with the window, the others from their files.
    readonly property var tabs: [
        { key: "main", title: "MAIN" },
        { key: "convert", title: "CONVERT", file: "ConvertView.qml" },
        { key: "segments", title: "SEGMENTS", file: "SegmentsView.qml" },
        { key: "search", title: "SEARCH", file: "SearchView.qml" },
        { key: "sorter", title: "SORTER", file: "SorterView.qml" },
        { key: "xdf", title: "XDF MAKER", file: "XDFView.qml" },
        { key: "patcher", title: "BIN PATCHER", file: "PatcherView.qml" },
        { key: "tools", title: "TOOLS", file: "ToolsView.qml" },
        { key: "stock", title: "STOCK FILES", file: "StockView.qml" }
    ]
    // The last has a button of its own at the bottom of the sidebar.
    readonly property var entries: tabs.concat({ key: "feedback", file: "FeedbackView.qml" })
    readonly property var viewKeys: entries.map(view => view.key)
    // Whether views that nobody has asked for yet are made between frames.
    property bool prepares: true
    // Whether all views are there, for whoever drives the window from outside.
    property bool complete: false

    // Whether the desktop has no dialogs for files and folders, so that the window shows its own.
    property bool ownFileDialogs: false

    onPreparesChanged: prepareNext()

    // One at a time.
    function prepareNext(): void {
        if (!prepares)
            return;
        const missing = Array.from(views.children).concat(hexEditor).filter(
            view => view instanceof LazyView && view.status !== Loader.Ready);
        complete = missing.length === 0;
        missing.find(view => !view.active)?.prepare();
    }

    function scroll(bar: VOXScrollBar, part: real): void {
        bar.position = Math.max(0, Math.min(bar.position + part, 1 - bar.size));
    }

    // By no more than it takes.
    function reveal(item: Item): void {
        const place = item.mapToItem(stage, 0, 0, item.width, item.height);
        const miss = (start, end, from, size) => Math.min(0, start - from) + Math.max(0, end - from - size);
        scroll(widthBar, miss(place.left, place.right, -stage.x, width) / stage.width);
        scroll(heightBar, miss(place.top, place.bottom, -stage.y, height) / stage.height);
    }

    // A window without one of its views is none: the program ends as it does when the window cannot be loaded.
    function giveUp(): void {
        Qt.exit(-1);
    }

    onActiveFocusItemChanged: {
        if (activeFocusItem && (widthBar.visible || heightBar.visible))
            reveal(activeFocusItem);
    }

    Component.onCompleted: OwnDialogs.host = ownFileDialogs ? contentItem : null

    visible: true
    width: 1440
    height: 900
    minimumWidth: 1100
    minimumHeight: 720
    title: "VOX - KVT Editor"

    Backdrop {
        anchors.fill: parent
    }

    // Below all others, so that what takes a drop in its own way comes first.
    FileDrop {
        objectName: "windowDrop"
        anchors.fill: parent
        enabled: workspace.enabled
        framed: dropCover
        onTaken: paths => root.appState.openKvt(paths[0])
    }

    // Where everything stands. The window is smaller than its minimum only where the screen is; what lies beyond
    // its edges is then scrolled to.
    Item {
        id: stage
        objectName: "stage"
        width: Math.max(root.width, root.minimumWidth)
        height: Math.max(root.height, root.minimumHeight)
        x: widthBar.visible ? -Math.round(widthBar.position * width) : 0
        y: heightBar.visible ? -Math.round(heightBar.position * height) : 0
    }

    // While the hex editor is shown, nothing behind it takes keys, clicks or hover; the control that had the
    // keyboard gets it back afterwards.
    FocusScope {
        id: workspace
        anchors.fill: stage
        focus: true
        enabled: !root.appState.showHex
        // Otherwise it would show faintly through the veil.
        opacity: hexEditor.visible && hexEditor.item ? 0 : 1

        RowLayout {
            anchors.fill: parent
            spacing: 0

            Sidebar {
                objectName: "sidebar"
                tabs: root.tabs
            }

            ColumnLayout {
                spacing: 0

                HeaderBar {
                    objectName: "header"
                }

                Rectangle {
                    Layout.fillWidth: true
                    Layout.preferredHeight: 1
                    color: VOXTheme.border
                }

                StackLayout {
                    id: views
                    objectName: "viewStack"
                    currentIndex: Math.max(0, root.viewKeys.indexOf(root.appState.tab))
                    Layout.fillWidth: true
                    Layout.fillHeight: true

                    MainView {
                        id: mainView
                        objectName: "mainView"
                    }
                    Repeater {
                        model: root.entries.slice(1)

                        LazyView {
                            required property var modelData

                            file: modelData.file
                            onLoaded: root.prepareNext()
                            onFailed: root.giveUp()
                        }
                    }
                }

                FooterBar {
                    objectName: "footer"
                }
            }
        }
    }

    LazyView {
        id: hexEditor
        file: "HexEditorView.qml"
        anchors.fill: stage
        visible: wanted
        wanted: root.appState.showHex
        onLoaded: root.prepareNext()
        onFailed: root.giveUp()
    }

    Connections {
        target: hexEditor.item
        function onClosed(): void {
            workspace.forceActiveFocus();
        }
        function onSaveWanted(): void {
            mainView.showSaveDialog();
        }
    }

    // The first frame waits for what it shows only.
    Connections {
        target: root
        function onFrameSwapped(): void {
            enabled = false;
            root.prepareNext();
        }
    }

    VOXScrollBar {
        id: widthBar
        objectName: "widthBar"
        anchors { left: parent.left; right: heightBar.visible ? heightBar.left : parent.right; bottom: parent.bottom }
        orientation: Qt.Horizontal
        size: root.width / stage.width
    }

    VOXScrollBar {
        id: heightBar
        objectName: "heightBar"
        anchors { right: parent.right; top: parent.top; bottom: parent.bottom }
        orientation: Qt.Vertical
        size: root.height / stage.height
    }

    // For what takes no wheel itself.
    WheelHandler {
        enabled: heightBar.visible || widthBar.visible
        acceptedDevices: PointerDevice.Mouse | PointerDevice.TouchPad
        orientation: Qt.Vertical | Qt.Horizontal
        onWheel: event => {
            root.scroll(heightBar, -event.angleDelta.y / 1200);
            root.scroll(widthBar, -event.angleDelta.x / 1200);
        }
    }

    Item {
        id: dropCover
        anchors.fill: parent
    }

    WindowKeys {
        workspace: mainView
        hexEditor: hexEditor
        views: views
        viewKeys: root.viewKeys
    }
}
