import KvtEditor

// A value that the user cannot edit, but copy.
VOXTextField {
    id: root

    readonly property AppState appState: app // qmllint disable unqualified

    locked: true
    copyable: true
    onCopyRequested: appState.copyText(text, title)
}
