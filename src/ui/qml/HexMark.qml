pragma ComponentBehavior: Bound

import QtQuick
import KvtEditor

// Frames some bytes of one row, in both of its columns.
Item {
    id: root

    required property HexGrid grid
    // The first byte of the row that is marked, and the one after the last.
    required property int first
    required property int end
    required property color edge
    property color charactersEdge: edge

    Accessible.ignored: true

    Frame {
        objectName: "digitsMark"
        x: root.grid.digitsX + 3 * root.first * root.grid.pitch - 2
        width: (3 * (root.end - root.first) - 1) * root.grid.pitch + 4
    }

    Frame {
        objectName: "charactersMark"
        x: root.grid.charactersX + root.first * root.grid.pitch - 1
        width: (root.end - root.first) * root.grid.pitch + 2
        border.color: root.charactersEdge
    }

    component Frame: Rectangle {
        y: 1
        height: root.height - 2
        radius: 2
        color: "transparent"
        border.width: 1
        border.color: root.edge
    }
}
