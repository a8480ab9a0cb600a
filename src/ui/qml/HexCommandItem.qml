import KvtEditor

// A command in a menu, with its key.
VOXMenuItem {
    required property HexCommand command

    text: command.text
    keyText: command.nativeText
    enabled: command.sensible
    onTriggered: command.activated()
}
