pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import KvtEditor

// Says what the bytes at the hex editor's cursor mean, and what the selected ones add up to. The keyboard moves from
// cell to cell; Tab leads to the one where it was.
FocusScope {
    id: root

    required property HexModel hexModel
    // The tables stand side by side, for a place that is low and some 1000 pixels wide.
    property bool wide: false

    readonly property int rowsPerTable: 6
    readonly property var values: inspector.values
    readonly property bool selected: hexModel.selectionLength > 0
    readonly property int rowCount: (selected ? 3 : 2) * rowsPerTable
    property int currentRow: 0
    property int currentColumn: 0

    function cellAt(row: int, column: int): HexInspectorCell {
        const tables = [numbers, others, sums];
        return tables[Math.floor(row / rowsPerTable)].cellAt(row % rowsPerTable, column);
    }

    function moveTo(row: int, column: int): void {
        cellAt(Math.max(0, Math.min(row, rowCount - 1)), column).forceActiveFocus(Qt.TabFocusReason);
    }

    // Beyond a table's edge stands another one, unless they stand below each other.
    function moveSideways(step: int): void {
        const column = currentColumn + step;
        const single = cellAt(currentRow, 0) === cellAt(currentRow, 1);
        if (!single && (column === 0 || column === 1))
            return moveTo(currentRow, column);
        const row = currentRow + step * rowsPerTable;
        if (wide && row >= 0 && row < rowCount)
            moveTo(row, step > 0 ? 0 : 1);
    }

    function enter(row: int, column: int): void {
        currentRow = row;
        if (column >= 0)
            currentColumn = column;
    }

    implicitWidth: 340
    implicitHeight: 480

    Accessible.role: Accessible.Grouping
    Accessible.name: "Inspector"

    // A cell that is gone takes the keyboard with it.
    onRowCountChanged: {
        if (currentRow < rowCount)
            return;
        if (activeFocus)
            moveTo(rowCount - 1, currentColumn);
        else
            currentRow = rowCount - 1;
    }
    onActiveFocusChanged: {
        if (activeFocus && Window.activeFocusItem === root)
            moveTo(currentRow, currentColumn);
    }

    Keys.onPressed: event => {
        const steps = {
            [Qt.Key_Up]: () => moveTo(currentRow - 1, currentColumn),
            [Qt.Key_Down]: () => moveTo(currentRow + 1, currentColumn),
            [Qt.Key_Left]: () => moveSideways(-1),
            [Qt.Key_Right]: () => moveSideways(1),
            [Qt.Key_Home]: () => moveTo(0, currentColumn),
            [Qt.Key_End]: () => moveTo(rowCount - 1, currentColumn)
        };
        const edits = event.key === Qt.Key_Return || event.key === Qt.Key_Enter;
        const copies = event.matches(StandardKey.Copy);
        const plain = (event.modifiers & ~Qt.KeypadModifier) === Qt.NoModifier;
        event.accepted = copies || plain && (edits || event.key in steps);
        if (event.accepted && event.key in steps)
            steps[event.key]();
        else if (copies && !event.isAutoRepeat)
            cellAt(currentRow, currentColumn).copy();
        else if (edits && plain && !event.isAutoRepeat)
            cellAt(currentRow, currentColumn).edit();
    }
    // Before a shortcut of the window's.
    Keys.onShortcutOverride: event => event.accepted = event.matches(StandardKey.Copy)

    HexInspector {
        id: inspector
        hexModel: root.hexModel
        active: root.visible
    }

    Rectangle {
        anchors.fill: parent
        radius: VOXTheme.radiusControl
        color: VOXTheme.panel
        border.width: 1
        border.color: VOXTheme.border
    }

    VOXLabel {
        id: caption
        objectName: "inspectorCaption"
        x: 12
        y: 10
        text: "Inspector"
        muted: false
        font { pixelSize: 13; bold: true }
        Accessible.role: Accessible.Heading
    }

    VOXLabel {
        objectName: "inspectorHint"
        anchors { right: parent.right; rightMargin: 12; baseline: caption.baseline }
        text: root.activeFocus ? "Ctrl+C copies, Return changes" : "Click copies, double click changes"
        font.pixelSize: 11
    }

    VOXScroll {
        objectName: "inspectorScroll"
        anchors { fill: parent; leftMargin: 12; rightMargin: 14; topMargin: 36; bottomMargin: 8 }

        Item {
            id: tables

            readonly property int gap: 24
            readonly property real shared: width - 2 * gap
            // Below or beside the others.
            readonly property real sumsX: root.wide ? others.x + others.width + gap : 0
            readonly property real sumsY: root.wide ? 0 : others.y + others.height + 14

            implicitHeight: Math.max(others.y + others.height,
                sumsY + (root.selected ? sums.height : selectHint.height))
            Layout.fillWidth: true

            HexInspectorTable {
                id: numbers
                width: root.wide ? 0.25 * tables.shared : tables.width
                title: "Type"
                heads: ["Little endian", "Big endian"]
                rows: root.values.slice(0, root.rowsPerTable)
                firstValue: 0
                currentRow: root.currentRow
                currentColumn: root.currentColumn
                onEntered: (row, column) => root.enter(row, column)
            }

            HexInspectorTable {
                id: others
                x: root.wide ? numbers.width + tables.gap : 0
                y: root.wide ? 0 : numbers.height
                width: root.wide ? 0.43 * tables.shared : tables.width
                title: numbers.title
                heads: numbers.heads
                headed: root.wide
                rows: root.values.slice(root.rowsPerTable)
                firstValue: root.rowsPerTable
                currentRow: root.currentRow - root.rowsPerTable
                currentColumn: root.currentColumn
                onEntered: (row, column) => root.enter(row + root.rowsPerTable, column)
            }

            HexInspectorTable {
                id: sums
                objectName: "inspectorSums"
                x: tables.sumsX
                y: tables.sumsY
                width: tables.width - x
                visible: root.selected
                title: "Selected"
                heads: ["Hex", "Decimal"]
                rows: inspector.sums
                missing: inspector.counting ? "…" : "–"
                currentRow: root.currentRow - 2 * root.rowsPerTable
                currentColumn: root.currentColumn
                onEntered: (row, column) => root.enter(row + 2 * root.rowsPerTable, column)
            }

            VOXLabel {
                id: selectHint
                objectName: "inspectorSelectHint"
                x: tables.sumsX
                y: tables.sumsY
                width: tables.width - x
                visible: !root.selected
                text: "Select bytes to see their sums, CRC-32 and SHA-256."
                wrapMode: Text.Wrap
                font.pixelSize: 11
            }
        }

        Item {
            Layout.fillHeight: true
        }
    }
}
