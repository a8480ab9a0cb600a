import KvtEditor

// Copies the selection, or without one what a row of the hex editor shows.
VOXMenu {
    id: root

    // The row it was opened on.
    property int row: 0
    required property HexLine line
    required property HexEditing editing

    readonly property AppState appState: app // qmllint disable unqualified

    function copy(format: int, text: string, label: string): void {
        if (appState.hexModel.selectionLength > 0)
            editing.copy(format);
        else
            appState.copyText(text, label);
    }

    VOXMenuItem {
        objectName: "copyOffset"
        text: "Copy offset"
        onTriggered: root.copy(HexEditing.AsOffset, root.line.offset, "Offset")
    }

    VOXMenuItem {
        objectName: "copyHex"
        text: "Copy hex"
        enabled: root.line.digits !== ""
        onTriggered: root.copy(HexEditing.AsHex, root.line.digits, "Hex")
    }

    VOXMenuItem {
        objectName: "copyText"
        text: "Copy text"
        enabled: root.line.characters !== ""
        onTriggered: root.copy(HexEditing.AsText, root.line.characters, "Text")
    }
}
