pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import KvtEditor

// The row of tools: every command in a menu, and what is selected, changed and different.
RowLayout {
    id: root

    required property HexCommands commands
    property bool inspecting: false

    readonly property AppState appState: app // qmllint disable unqualified
    readonly property HexEditing editing: appState.hexEditing()

    signal applyWanted()
    signal closeWanted()
    signal findWanted()
    signal saveWanted()

    spacing: 8

    MenuButton {
        objectName: "hexEditMenuButton"
        text: "Edit"

        VOXMenu {
            width: 290
            objectName: "hexEditMenu"

            HexCommandItem { command: root.commands.undo }
            HexCommandItem { command: root.commands.redo }
            VOXMenuLine { }
            HexCommandItem { command: root.commands.copyHex }
            HexCommandItem { command: root.commands.copyText }
            HexCommandItem { command: root.commands.copyArray }
            HexCommandItem { command: root.commands.copyOffset }
            HexCommandItem { command: root.commands.paste }
            HexCommandItem { command: root.commands.pasteFile }
            VOXMenuLine { }
            VOXMenuItem {
                text: "Apply the patch"
                keyText: "Return"
                onTriggered: root.applyWanted()
            }
            HexCommandItem { command: root.commands.fill }
            HexCommandItem { command: root.commands.xorSelection }
            HexCommandItem { command: root.commands.replaceAll }
            HexCommandItem { command: root.commands.selectAll }
            VOXMenuLine { }
            VOXMenuItem {
                objectName: "hexSaveItem"
                text: "Save file"
                keyText: "Ctrl+S"
                onTriggered: root.saveWanted()
            }
            HexCommandItem { command: root.commands.saveSelection }
            VOXMenuItem {
                text: "Close"
                keyText: "Esc"
                onTriggered: root.closeWanted()
            }
        }
    }

    MenuButton {
        objectName: "hexGoMenuButton"
        text: "Go"

        VOXMenu {
            width: 290
            objectName: "hexGoMenu"

            HexCommandItem { command: root.commands.goTo }
            VOXMenuLine { }
            HexCommandItem { command: root.commands.bookmark }
            HexCommandItem { command: root.commands.nextBookmark }
            HexCommandItem { command: root.commands.previousBookmark }
            VOXMenuLine { }
            VOXMenuItem {
                text: "Find"
                keyText: "Ctrl+F"
                onTriggered: root.findWanted()
            }
            HexCommandItem { command: root.commands.findNext }
            HexCommandItem { command: root.commands.findPrevious }
            VOXMenuLine { }
            HexCommandItem { command: root.commands.nextChange }
            HexCommandItem { command: root.commands.previousChange }
            VOXMenuLine { }
            HexCommandItem { command: root.commands.nextDifference }
            HexCommandItem { command: root.commands.previousDifference }
            VOXMenuLine { }
            HexCommandItem { command: root.commands.inspector }
        }
    }

    MenuButton {
        objectName: "hexCompareMenuButton"
        text: "Compare"

        VOXMenu {
            width: 290
            objectName: "hexCompareMenu"

            HexCommandItem { command: root.commands.compareWith }
            HexCommandItem { command: root.commands.stopComparing }
            VOXMenuLine { }
            HexCommandItem { command: root.commands.takeOver }
            HexCommandItem { command: root.commands.listDifferences }
        }
    }

    VOXButton {
        objectName: "hexInspectorButton"
        text: "Inspector"
        hint: root.commands.inspector.nativeText
        checkable: true
        checked: root.inspecting
        implicitWidth: 100
        Layout.fillWidth: false
        Layout.preferredHeight: 32
        onClicked: root.commands.inspector.activated()
    }

    Fact {
        objectName: "hexSelectionText"
        text: root.editing.selectionText
        Layout.leftMargin: 8
    }

    Item {
        Layout.fillWidth: true
    }

    Fact {
        objectName: "hexChangesText"
        text: root.editing.changesText
        color: VOXTheme.orangeBright
    }

    Fact {
        objectName: "hexDifferencesText"
        text: root.editing.compare.text
    }

    // Opens the menu declared in it.
    component MenuButton: VOXButton {
        id: button

        default property VOXMenu menu

        hint: ""
        implicitWidth: 90
        Layout.fillWidth: false
        Layout.preferredHeight: 32
        Accessible.role: Accessible.ButtonMenu
        onClicked: menu.popup(button, 0, height + 4)
        Keys.onDownPressed: clicked()
    }

    component Fact: VOXLabel {
        id: fact

        font.pixelSize: 12
        elide: Text.ElideRight
        maximumLineCount: 1
        visible: text !== ""
        Layout.fillWidth: true
        Layout.minimumWidth: 0
        Layout.maximumWidth: Math.ceil(implicitWidth)

        HoverHandler {
            id: hover
        }

        VOXToolTip {
            visible: hover.hovered && fact.truncated
            fullText: fact.text
        }
    }
}
