pragma ComponentBehavior: Bound

import QtQuick
import KvtEditor

// Sixteen bytes of the file: where they stand, their digits, their characters, and those of another file.
HexLine {
    id: root

    required property bool current
    required property HexGrid grid

    color: current ? VOXTheme.accent(0.15) : "transparent"

    Accessible.role: Accessible.ListItem
    Accessible.name: spoken
    Accessible.selectable: true
    Accessible.selected: current

    Row {
        x: root.grid.offsetX
        height: parent.height
        spacing: root.grid.spacing

        RowText {
            text: root.offset
            color: VOXTheme.orange
            width: root.grid.offsetWidth
        }

        RowText {
            text: root.digits
            color: VOXTheme.text
            width: root.grid.digitsWidth
        }

        RowText {
            text: root.characters
            color: VOXTheme.muted
            width: root.grid.charactersWidth
        }
    }

    RowText {
        visible: root.grid.comparing
        x: root.grid.otherDigitsX
        text: root.otherDigits
        color: VOXTheme.text
        width: root.grid.digitsWidth
    }

    RowText {
        visible: root.grid.comparing
        x: root.grid.otherCharactersX
        text: root.otherCharacters
        color: VOXTheme.muted
        width: root.grid.charactersWidth
    }

    component RowText: HexColumn {
        height: parent.height
        font: root.grid.font
        Accessible.ignored: true
    }
}
