pragma ComponentBehavior: Bound

import QtQuick
import KvtEditor

// Frames among the rows in sight: the last match's, and above it the cursor's. Frames only what is in sight,
// however long the match.
Item {
    id: root

    required property HexModel hexModel
    required property HexGrid grid
    required property real topRow
    required property real rowsInSight
    required property int rowHeight
    // Which of the two columns is typed into.
    required property bool typesText

    readonly property int bytesPerRow: grid.bytesPerRow
    readonly property int matchEnd: hexModel.matchStart + hexModel.matchLength
    readonly property int firstMatchRow: Math.max(Math.floor(topRow), rowOf(hexModel.matchStart))
    readonly property int lastMatchRow: Math.min(Math.floor(topRow + rowsInSight), rowOf(matchEnd - 1))
    readonly property bool cursorInSight: hexModel.byteCount > 0 && hexModel.currentRow > topRow - 1
        && hexModel.currentRow < topRow + rowsInSight

    function rowOf(position: int): int {
        return Math.floor(position / bytesPerRow);
    }

    function rowY(row: int): real {
        return Math.round((row - topRow) * rowHeight);
    }

    Repeater {
        model: root.hexModel.matchLength > 0 ? Math.max(0, root.lastMatchRow - root.firstMatchRow + 1) : 0

        HexMark {
            required property int index
            readonly property int row: root.firstMatchRow + index
            readonly property int rowStart: row * root.bytesPerRow

            objectName: "matchMark" + index
            y: root.rowY(row)
            width: root.width
            height: root.rowHeight
            grid: root.grid
            first: Math.max(0, root.hexModel.matchStart - rowStart)
            end: Math.min(root.bytesPerRow, root.matchEnd - rowStart)
            edge: VOXTheme.matchEdge
        }
    }

    HexMark {
        objectName: "cursorMark"
        visible: root.cursorInSight
        y: visible ? root.rowY(root.hexModel.currentRow) : 0
        width: root.width
        height: root.rowHeight
        grid: root.grid
        first: root.hexModel.cursor % root.bytesPerRow
        end: first + 1
        edge: root.typesText ? VOXTheme.orangeDim : VOXTheme.orangeBright
        charactersEdge: root.typesText ? VOXTheme.orangeBright : VOXTheme.orangeDim
    }
}
