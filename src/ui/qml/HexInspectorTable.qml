pragma ComponentBehavior: Bound

import QtQuick
import KvtEditor

// Some rows of the inspector, under the captions of their columns.
Column {
    id: root

    // What the rows are, and the captions of the two columns.
    required property string title
    required property var heads
    property bool headed: true
    // Maps as HexInspector makes them; always the same number.
    required property var rows
    // Stands for a value that is not there.
    property string missing: "–"
    // Where the rows begin among the values at the cursor, or -1 for what cannot be changed.
    property int firstValue: -1
    // The cell that Tab leads to.
    required property int currentRow
    required property int currentColumn
    property int nameWidth: 56
    readonly property real cellWidth: Math.floor((width - nameWidth) / 2)

    // A cell got the keyboard; the only one of its row is in column -1.
    signal entered(int row, int column)

    function cellAt(row: int, column: int): HexInspectorCell {
        return (lines.itemAt(row) as HexInspectorRow).cellAt(column);
    }

    Accessible.role: Accessible.Table
    Accessible.name: title

    Row {
        visible: root.headed
        height: 18

        ListCaption {
            text: root.title
            width: root.nameWidth
        }

        ListCaption {
            text: root.heads[0]
            width: root.cellWidth
            leftPadding: 4
        }

        ListCaption {
            text: root.heads[1]
            width: root.cellWidth
            leftPadding: 4
        }
    }

    Repeater {
        id: lines
        model: root.rows.length

        HexInspectorRow {
            required property int index
            readonly property var row: root.rows[index]

            width: root.width
            name: row.name
            first: row.first
            second: row.second
            single: row.single
            heads: root.heads
            missing: root.missing
            valueRow: root.firstValue < 0 ? -1 : root.firstValue + index
            nameWidth: root.nameWidth
            cellWidth: root.cellWidth
            currentColumn: index === root.currentRow ? root.currentColumn : -1
            onEntered: column => root.entered(index, column)
        }
    }
}
