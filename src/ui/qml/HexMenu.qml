import KvtEditor

// Copies what one row of the hex editor shows, or else what is selected.
VOXMenu {
    id: root

    // The row it was opened on, and its texts.
    property int row: 0
    required property HexEditing editing
    required property string offset
    required property string digits
    required property string characters

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
        onTriggered: root.copy(HexEditing.AsOffset, root.offset, "Offset")
    }

    VOXMenuItem {
        objectName: "copyHex"
        text: "Copy hex"
        enabled: root.digits !== ""
        onTriggered: root.copy(HexEditing.AsHex, root.digits, "Hex")
    }

    VOXMenuItem {
        objectName: "copyText"
        text: "Copy text"
        enabled: root.characters !== ""
        onTriggered: root.copy(HexEditing.AsText, root.characters, "Text")
    }
}
