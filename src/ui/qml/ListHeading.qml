pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import KvtEditor

// The heading of a list in columns. The rows take keys, places and widths from it.
Row {
    id: root

    required property real rowWidth
    property list<ListColumn> columns
    property color color: VOXTheme.muted
    property int pixelSize: 11
    readonly property int margin: 10
    readonly property real rest: Math.max(80, Array.from(columns).reduce(
        (left, column) => left - column.width - spacing, rowWidth - 2 * margin + spacing))

    function widthOf(column: ListColumn): real {
        return column.width > 0 ? column.width : rest;
    }

    spacing: 12
    Layout.leftMargin: margin

    Repeater {
        model: root.columns

        ListCaption {
            required property ListColumn modelData

            objectName: root.objectName + modelData.title
            text: modelData.title
            color: root.color
            font.pixelSize: root.pixelSize
            width: root.widthOf(modelData)
        }
    }
}
