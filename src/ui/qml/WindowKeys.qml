pragma ComponentBehavior: Bound

import QtQml
import QtQuick
import QtQuick.Layouts
import KvtEditor

// The keys that act on the whole window. They are held by an item: only such keys are silent while a dialog
// or a popup is open. A key that is held down acts once.
Item {
    id: root

    required property MainView workspace
    required property LazyView hexEditor
    required property StackLayout views
    // The keys of the views, in their order.
    required property var viewKeys
    readonly property AppState appState: app // qmllint disable unqualified
    readonly property bool behindHex: appState.showHex
    readonly property Item currentView: views.itemAt(views.currentIndex)
    // Without its type, which would be loaded with the window.
    readonly property var hexView: hexEditor.item

    function openFile(): void {
        appState.tab = "main";
        workspace.showOpenDialog();
    }

    function toggleHexEditor(): void {
        if (appState.showHex)
            hexView.close();
        else
            workspace.showHexEditor();
    }

    function isInside(item: Item, ancestor: Item): bool {
        let inner = item;
        while (inner && inner !== ancestor)
            inner = inner.parent;
        return inner !== null;
    }

    function focusView(): void {
        (currentView as LazyView)?.make();
        currentView.nextItemInFocusChain(true).forceActiveFocus(Qt.ShortcutFocusReason);
    }

    // The keyboard goes along.
    function showView(key: string): void {
        appState.tab = key;
        focusView();
    }

    // What is typed then replaces what was searched for.
    function focusSearch(): void {
        const field = (currentView as LazyView)?.searchField;
        if (appState.showHex) {
            hexView.focusSearch();
        } else if (field) {
            field.forceActiveFocus(Qt.ShortcutFocusReason);
            field.selectAll();
        }
    }

    // A control that is hidden with its view would go on to take keys.
    onCurrentViewChanged: {
        const focused = Window.activeFocusItem;
        if (isInside(focused, views) && !isInside(focused, currentView))
            focusView();
    }

    Key {
        sequence: "Ctrl+O"
        enabled: !root.behindHex
        onActivated: root.openFile()
    }

    Key {
        sequence: "Ctrl+S"
        onActivated: root.workspace.showSaveDialog()
    }

    Key {
        sequence: "Ctrl+H"
        onActivated: root.toggleHexEditor()
    }

    Key {
        sequence: "Ctrl+F"
        onActivated: root.focusSearch()
    }

    Key {
        sequence: "F1"
        onActivated: root.appState.goHelp()
    }

    Key {
        sequence: "Ctrl+Q"
        onActivated: root.Window.window.close()
    }

    Instantiator {
        model: root.viewKeys

        Key {
            required property string modelData
            required property int index

            sequence: "Ctrl+" + (index + 1) % 10
            enabled: !root.behindHex
            onActivated: root.showView(modelData)
        }
    }

    component Key: Shortcut {
        autoRepeat: false
    }
}
