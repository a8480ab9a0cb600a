pragma ComponentBehavior: Bound

import QtQuick
import KvtEditor

// Numbers the columns of the hex editor's rows; the cursor's is orange.
Item {
    id: root

    required property HexGrid grid
    required property int cursorColumn

    implicitHeight: 16
    Accessible.ignored: true

    Repeater {
        model: root.grid.bytesPerRow

        Item {
            id: column

            required property int index
            readonly property string digit: index.toString(16).toUpperCase()
            readonly property color colour: index === root.cursorColumn ? VOXTheme.orange : VOXTheme.muted

            objectName: "rulerColumn" + index

            Number {
                x: root.grid.digitsX + 3 * column.index * root.grid.pitch
                text: "0" + column.digit
                color: column.colour
            }

            Number {
                x: root.grid.charactersX + column.index * root.grid.pitch
                text: column.digit
                color: column.colour
            }

            Number {
                visible: root.grid.comparing
                x: root.grid.otherDigitsX + 3 * column.index * root.grid.pitch
                text: "0" + column.digit
                color: column.colour
            }

            Number {
                visible: root.grid.comparing
                x: root.grid.otherCharactersX + column.index * root.grid.pitch
                text: column.digit
                color: column.colour
            }
        }
    }

    component Number: Text {
        textFormat: Text.PlainText
        font: root.grid.font
        Accessible.ignored: true
    }
}
