pragma ComponentBehavior: Bound

import QtQuick
import KvtEditor

// Sixteen bytes of the file: where they stand, their digits, their characters.
Rectangle {
    id: root

    required property string offset
    required property string digits
    required property string characters
    required property bool current
    // Of the other file, while one is compared.
    property string otherDigits
    property string otherCharacters
    required property HexGrid grid

    color: current ? VOXTheme.accent(0.15) : "transparent"

    Accessible.role: Accessible.ListItem
    Accessible.name: "Offset " + offset + ", bytes " + digits + ", text " + characters
        + (grid.comparing ? ", other file " + otherDigits : "")
    Accessible.selectable: true
    Accessible.selected: current

    Row {
        x: root.grid.offsetX
        height: parent.height
        spacing: root.grid.spacing

        HexColumn {
            text: root.offset
            color: VOXTheme.orange
            width: root.grid.offsetWidth
        }

        HexColumn {
            text: root.digits
            color: VOXTheme.text
            width: root.grid.digitsWidth
        }

        HexColumn {
            text: root.characters
            color: VOXTheme.muted
            width: root.grid.charactersWidth
        }
    }

    HexColumn {
        visible: root.grid.comparing
        x: root.grid.otherDigitsX
        text: root.otherDigits
        color: VOXTheme.text
        width: root.grid.digitsWidth
    }

    HexColumn {
        visible: root.grid.comparing
        x: root.grid.otherCharactersX
        text: root.otherCharacters
        color: VOXTheme.muted
        width: root.grid.charactersWidth
    }

    component HexColumn: Text {
        height: parent.height
        textFormat: Text.PlainText
        font: root.grid.font
        verticalAlignment: Text.AlignVCenter
        Accessible.ignored: true
    }
}
