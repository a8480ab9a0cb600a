import QtQuick
import KvtEditor

// Sixteen bytes of the file: where they stand, their digits, their characters.
Rectangle {
    id: root

    required property string offset
    required property string digits
    required property string characters
    required property bool current

    color: current ? VOXTheme.accent(0.15) : "transparent"

    Accessible.role: Accessible.ListItem
    Accessible.name: "Offset " + offset + ", bytes " + digits + ", text " + characters
    Accessible.selectable: true
    Accessible.selected: current

    Row {
        x: 8
        height: parent.height
        spacing: 12

        HexColumn {
            text: root.offset
            color: VOXTheme.orange
            width: 80
        }

        HexColumn {
            text: root.digits
            color: VOXTheme.text
            width: Math.max(280, root.width - 260)
        }

        HexColumn {
            text: root.characters
            color: VOXTheme.muted
            width: 140
        }
    }

    component HexColumn: Text {
        height: parent.height
        textFormat: Text.PlainText
        font { family: VOXTheme.fixedFamily; pixelSize: 12 }
        verticalAlignment: Text.AlignVCenter
        Accessible.ignored: true
    }
}
