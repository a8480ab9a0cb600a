import QtQuick
import KvtEditor

// The hex editor's commands with their keys, for menus, buttons and the keyboard. They are silent while the
// editor is not shown.
Item {
    id: root

    readonly property AppState appState: app // qmllint disable unqualified
    readonly property HexEditing editing: appState.hexEditing()
    readonly property HexCompare compare: editing.compare
    readonly property bool hasFile: appState.hexModel.byteCount > 0
    readonly property bool hasSelection: appState.hexModel.selectionLength > 0

    property alias undo: undoCommand
    property alias redo: redoCommand
    property alias copyHex: copyHexCommand
    property alias copyText: copyTextCommand
    property alias copyArray: copyArrayCommand
    property alias copyOffset: copyOffsetCommand
    property alias paste: pasteCommand
    property alias fill: fillCommand
    property alias xorSelection: xorCommand
    property alias pasteFile: pasteFileCommand
    property alias saveSelection: saveSelectionCommand
    property alias replaceAll: replaceAllCommand
    property alias selectAll: selectAllCommand
    property alias goTo: goToCommand
    property alias findNext: findNextCommand
    property alias findPrevious: findPreviousCommand
    property alias nextChange: nextChangeCommand
    property alias previousChange: previousChangeCommand
    property alias bookmark: bookmarkCommand
    property alias nextBookmark: nextBookmarkCommand
    property alias previousBookmark: previousBookmarkCommand
    property alias inspector: inspectorCommand
    property alias compareWith: compareWithCommand
    property alias stopComparing: stopComparingCommand
    property alias nextDifference: nextDifferenceCommand
    property alias previousDifference: previousDifferenceCommand
    property alias takeOver: takeOverCommand
    property alias listDifferences: listDifferencesCommand

    // What the view does itself.
    signal fillWanted()
    signal xorWanted()
    signal fileWanted()
    signal selectionSaveWanted()
    signal replaceWanted()
    signal goToWanted()
    signal findNextWanted()
    signal findPreviousWanted()
    signal inspectorWanted()
    signal otherWanted()
    signal listWanted()

    HexCommand {
        id: undoCommand
        enabled: root.appState.showHex
        text: "Undo"
        sequence: "Ctrl+Z"
        autoRepeat: true
        sensible: root.editing.canUndo
        onActivated: root.editing.undo()
    }

    HexCommand {
        id: redoCommand
        enabled: root.appState.showHex
        text: "Redo"
        sequence: "Ctrl+Shift+Z"
        autoRepeat: true
        sensible: root.editing.canRedo
        onActivated: root.editing.redo()
    }

    HexCommand {
        id: copyHexCommand
        enabled: root.appState.showHex
        text: "Copy as hex"
        sequence: "Ctrl+C"
        sensible: root.hasFile
        onActivated: root.editing.copy(HexEditing.AsHex)
    }

    HexCommand {
        id: copyTextCommand
        enabled: root.appState.showHex
        text: "Copy as text"
        sequence: "Ctrl+Shift+C"
        sensible: root.hasFile
        onActivated: root.editing.copy(HexEditing.AsText)
    }

    HexCommand {
        id: copyArrayCommand
        enabled: root.appState.showHex
        text: "Copy as C array"
        sequence: "Ctrl+Alt+C"
        sensible: root.hasFile
        onActivated: root.editing.copy(HexEditing.AsCArray)
    }

    HexCommand {
        id: copyOffsetCommand
        enabled: root.appState.showHex
        text: "Copy offset"
        sequence: "Ctrl+Shift+O"
        sensible: root.hasFile
        onActivated: root.editing.copy(HexEditing.AsOffset)
    }

    HexCommand {
        id: pasteCommand
        enabled: root.appState.showHex
        text: "Paste"
        sequence: "Ctrl+V"
        sensible: root.hasFile
        onActivated: root.editing.paste()
    }

    HexCommand {
        id: fillCommand
        enabled: root.appState.showHex
        text: "Fill the selection"
        sequence: "Ctrl+Shift+F"
        sensible: root.hasSelection
        onActivated: root.fillWanted()
    }

    HexCommand {
        id: xorCommand
        enabled: root.appState.showHex
        text: "XOR the selection"
        sequence: "Ctrl+Shift+X"
        sensible: root.hasSelection
        onActivated: root.xorWanted()
    }

    HexCommand {
        id: pasteFileCommand
        enabled: root.appState.showHex
        text: "Paste a file"
        sequence: "Ctrl+Shift+V"
        sensible: root.hasFile
        onActivated: root.fileWanted()
    }

    HexCommand {
        id: saveSelectionCommand
        enabled: root.appState.showHex
        text: "Save the selection"
        sequence: "Ctrl+Shift+S"
        sensible: root.hasSelection
        onActivated: root.selectionSaveWanted()
    }

    HexCommand {
        id: replaceAllCommand
        enabled: root.appState.showHex
        text: "Replace all"
        sequence: "Ctrl+R"
        sensible: root.hasFile
        onActivated: root.replaceWanted()
    }

    HexCommand {
        id: selectAllCommand
        enabled: root.appState.showHex
        text: "Select all"
        sequence: "Ctrl+A"
        sensible: root.hasFile
        onActivated: root.editing.selectAll()
    }

    HexCommand {
        id: goToCommand
        enabled: root.appState.showHex
        text: "Go to offset"
        sequence: "Ctrl+G"
        sensible: root.hasFile
        onActivated: root.goToWanted()
    }

    HexCommand {
        id: findNextCommand
        enabled: root.appState.showHex
        text: "Find next"
        sequence: "F3"
        sensible: root.hasFile
        onActivated: root.findNextWanted()
    }

    HexCommand {
        id: findPreviousCommand
        enabled: root.appState.showHex
        text: "Find previous"
        sequence: "Shift+F3"
        sensible: root.hasFile
        onActivated: root.findPreviousWanted()
    }

    HexCommand {
        id: nextChangeCommand
        enabled: root.appState.showHex
        text: "Next change"
        sequence: "F7"
        sensible: root.editing.changedBytes > 0
        onActivated: root.editing.nextChange()
    }

    HexCommand {
        id: previousChangeCommand
        enabled: root.appState.showHex
        text: "Previous change"
        sequence: "Shift+F7"
        sensible: root.editing.changedBytes > 0
        onActivated: root.editing.previousChange()
    }

    HexCommand {
        id: bookmarkCommand
        enabled: root.appState.showHex
        text: "Set or remove a bookmark"
        sequence: "Ctrl+B"
        sensible: root.hasFile
        onActivated: root.editing.toggleBookmark()
    }

    HexCommand {
        id: nextBookmarkCommand
        enabled: root.appState.showHex
        text: "Next bookmark"
        sequence: "F2"
        sensible: root.editing.bookmarks.length > 0
        onActivated: root.editing.nextBookmark()
    }

    HexCommand {
        id: previousBookmarkCommand
        enabled: root.appState.showHex
        text: "Previous bookmark"
        sequence: "Shift+F2"
        sensible: root.editing.bookmarks.length > 0
        onActivated: root.editing.previousBookmark()
    }

    HexCommand {
        id: inspectorCommand
        enabled: root.appState.showHex
        text: "Inspector"
        sequence: "Ctrl+I"
        onActivated: root.inspectorWanted()
    }

    HexCommand {
        id: compareWithCommand
        enabled: root.appState.showHex
        text: "Compare with a file"
        sequence: "Ctrl+K"
        sensible: root.hasFile
        onActivated: root.otherWanted()
    }

    HexCommand {
        id: stopComparingCommand
        enabled: root.appState.showHex
        text: "Stop comparing"
        sequence: "Ctrl+Shift+K"
        sensible: root.compare.active || root.compare.busy
        onActivated: {
            if (sensible)
                root.compare.stop();
            else
                root.appState.setStatus("Compare with a file first.", 0);
        }
    }

    HexCommand {
        id: nextDifferenceCommand
        enabled: root.appState.showHex
        text: "Next difference"
        sequence: "F6"
        sensible: root.compare.active
        onActivated: root.editing.nextDifference()
    }

    HexCommand {
        id: previousDifferenceCommand
        enabled: root.appState.showHex
        text: "Previous difference"
        sequence: "Shift+F6"
        sensible: root.compare.active
        onActivated: root.editing.previousDifference()
    }

    HexCommand {
        id: takeOverCommand
        enabled: root.appState.showHex
        text: "Take over"
        sequence: "Ctrl+T"
        sensible: root.compare.active
        onActivated: root.editing.takeOver()
    }

    HexCommand {
        id: listDifferencesCommand
        enabled: root.appState.showHex
        text: "List of differences"
        sequence: "Ctrl+L"
        sensible: root.compare.active
        onActivated: root.listWanted()
    }
}
