pragma ComponentBehavior: Bound

import QtQuick
import KvtEditor

// One row of the inspector's tables: a name, and a value in each of two columns, or one across both.
Item {
    id: root

    required property string name
    required property string first
    required property string second
    required property bool single
    // Of the two columns.
    required property var heads
    required property string missing
    // Which of the values at the cursor it is, or -1.
    required property int valueRow
    required property int nameWidth
    required property real cellWidth
    // The one that Tab leads to, or -1.
    required property int currentColumn

    // A cell got the keyboard; the only one of a row is in column -1.
    signal entered(int column)

    function cellAt(column: int): HexInspectorCell {
        return cells.itemAt(Math.min(column, cells.count - 1)) as HexInspectorCell;
    }

    implicitHeight: childrenRect.height

    VOXLabel {
        anchors { baseline: parent.top; baselineOffset: 14 }
        text: root.name
        font.family: VOXTheme.fixedFamily
        Accessible.ignored: true
    }

    Repeater {
        id: cells
        model: root.single ? 1 : 2

        HexInspectorCell {
            required property int index

            objectName: root.name + "/" + index
            x: root.nameWidth + index * root.cellWidth
            width: root.cellWidth * (root.single ? 2 : 1)
            label: root.single ? root.name : root.name + " " + root.heads[index].toLowerCase()
            value: index === 0 ? root.first : root.second
            missing: root.missing
            valueRow: root.valueRow
            bigEndian: index === 1
            activeFocusOnTab: root.currentColumn === index || root.currentColumn >= 0 && root.single
            onActiveFocusChanged: {
                if (activeFocus)
                    root.entered(root.single ? -1 : index);
            }
        }
    }
}
