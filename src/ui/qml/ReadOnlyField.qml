import KvtEditor

// A value that the user cannot edit, but copy.
VOXTextField {
    id: root

    readonly property AppState appState: app // qmllint disable unqualified
    // The field may show its beginning only.
    required property string value

    text: value
    locked: true
    copyable: true
    onCopyRequested: appState.copyText(value, title)
}
