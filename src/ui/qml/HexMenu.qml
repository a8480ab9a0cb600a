import KvtEditor

// Copies what one row of the hex editor shows.
VOXMenu {
    id: root

    // The row it was opened on, and its texts.
    property int row: 0
    required property string offset
    required property string digits
    required property string characters

    readonly property AppState appState: app // qmllint disable unqualified

    VOXMenuItem {
        objectName: "copyOffset"
        text: "Copy offset"
        onTriggered: root.appState.copyText(root.offset, "Offset")
    }

    VOXMenuItem {
        objectName: "copyHex"
        text: "Copy hex"
        enabled: root.digits !== ""
        onTriggered: root.appState.copyText(root.digits, "Hex")
    }

    VOXMenuItem {
        objectName: "copyText"
        text: "Copy text"
        enabled: root.characters !== ""
        onTriggered: root.appState.copyText(root.characters, "Text")
    }
}
