import QtQuick
import QtQuick.Layouts
import KvtEditor

// A column that scrolls when its place is too small, and keeps the control with the keyboard in sight. Its
// bar stands in the margin of the card around it, so that the column's width never changes.
Item {
    id: root

    default property alias content: column.data
    property alias spacing: column.spacing
    property alias contentY: view.contentY
    readonly property Item focusedItem: Window.activeFocusItem

    implicitWidth: column.implicitWidth
    implicitHeight: column.implicitHeight
    Layout.fillWidth: true
    Layout.fillHeight: true
    Layout.minimumHeight: 0

    // Scrolls by no more than it takes; a caption above the field comes along.
    function reveal(item: Item): void {
        if (!item || !isInside(item))
            return;
        const top = item.mapToItem(column, 0, 0).y - 24;
        const bottom = item.mapToItem(column, 0, item.height).y + 8;
        const highest = Math.max(0, view.contentHeight - view.height);
        if (bottom > view.contentY + view.height)
            view.contentY = Math.min(bottom - view.height, highest);
        if (top < view.contentY)
            view.contentY = Math.max(0, top);
    }

    function isInside(item: Item): bool {
        let ancestor = item;
        while (ancestor && ancestor !== column)
            ancestor = ancestor.parent;
        return ancestor === column;
    }

    onFocusedItemChanged: reveal(focusedItem)
    onHeightChanged: reveal(focusedItem)

    Flickable {
        id: view
        objectName: "scrollView"
        anchors.fill: parent
        clip: true
        contentWidth: width
        contentHeight: Math.max(height, column.implicitHeight)
        interactive: contentHeight > height
        boundsBehavior: Flickable.StopAtBounds

        ColumnLayout {
            id: column
            width: view.width
            height: view.contentHeight
            spacing: 10
        }
    }

    VOXScrollBar {
        id: bar
        anchors { left: parent.right; leftMargin: 4; top: parent.top; bottom: parent.bottom }
        orientation: Qt.Vertical
        size: view.visibleArea.heightRatio
        onPositionChanged: {
            if (pressed)
                view.contentY = position * view.contentHeight;
        }

        Binding on position {
            when: !bar.pressed
            value: view.visibleArea.yPosition
            restoreMode: Binding.RestoreNone
        }
    }
}
