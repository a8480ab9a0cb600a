pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import KvtEditor

// The heading of a list in columns. The rows take keys, places and widths from it. The rows of a `sortable` list are
// sorted by a click: upwards, downwards, and then as they came.
Row {
    id: root

    required property real rowWidth
    property list<ListColumn> columns
    property color color: VOXTheme.muted
    property int pixelSize: 11
    property bool sortable: false
    // The key of the column that the rows are sorted by; empty for none.
    property string sortKey
    property bool descending: false
    readonly property int margin: 10
    readonly property real rest: Math.max(80, Array.from(columns).reduce(
        (left, column) => left - column.width - spacing, rowWidth - 2 * margin + spacing))

    function widthOf(column: ListColumn): real {
        return column.width > 0 ? column.width : rest;
    }

    function sortBy(key: string): void {
        const again = key === sortKey;
        sortKey = again && descending ? "" : key;
        descending = again && !descending;
    }

    spacing: 12
    Layout.leftMargin: margin

    Repeater {
        model: root.columns

        ListCaption {
            id: caption

            required property ListColumn modelData
            readonly property bool sorts: root.sortKey === modelData.key

            objectName: root.objectName + modelData.title
            text: modelData.title + (sorts ? root.descending ? " ▾" : " ▴" : "")
            color: root.color
            font.pixelSize: root.pixelSize
            width: root.widthOf(modelData)
            Accessible.name: modelData.title
            Accessible.description: sorts ? root.descending ? "Sorted downwards" : "Sorted upwards" : ""
            Accessible.onPressAction: {
                if (root.sortable)
                    root.sortBy(modelData.key);
            }

            MouseArea {
                anchors { fill: parent; topMargin: -4; bottomMargin: -4 }
                enabled: root.sortable
                cursorShape: Qt.PointingHandCursor
                onClicked: root.sortBy(caption.modelData.key)
            }
        }
    }
}
