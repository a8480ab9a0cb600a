import QtQuick
import QtQuick.Controls.Basic
import KvtEditor

// A list of any length: its rows are recycled, the keyboard moves a highlighted one, and a text that a row
// had to shorten is shown whole on hover. A row tells of the pointer through `hoveredRow`.
ListView {
    id: root

    property string name
    property VOXListRow hoveredRow: null
    property bool hasMenus: false
    readonly property real rowWidth: width - 14

    // Return was pressed on the highlighted row.
    signal chosen(int row)
    // A key for a menu was pressed on the highlighted row.
    signal menuKeyPressed(int row)
    // A key moved the highlight.
    signal movedByKey(int modifiers)

    function moveTo(row: int): void {
        currentIndex = Math.max(0, Math.min(row, count - 1));
    }

    function startOver(): void {
        currentIndex = -1;
        positionViewAtBeginning();
    }

    // A key that is held chooses once.
    function choose(event: var): void {
        if (!event.isAutoRepeat)
            chosen(currentIndex);
    }

    clip: true
    header: Item { implicitHeight: 4 }
    footer: Item { implicitHeight: 4 }
    reuseItems: true
    // Rows made beforehand are made bit by bit, and one that is half made when the rows change is never finished
    // nor forgotten (seen in Qt 6.4).
    cacheBuffer: 0
    boundsBehavior: Flickable.StopAtBounds
    currentIndex: -1
    highlightMoveDuration: 0
    activeFocusOnTab: true

    Accessible.role: Accessible.List
    Accessible.name: name
    Accessible.focusable: true

    // A list that differs starts at its top; the same one announced again never comes here.
    onModelChanged: startOver()

    Keys.onPressed: event => {
        const rowHeight = contentHeight / Math.max(1, count);
        const page = Math.max(1, Math.floor(height / Math.max(1, rowHeight)) - 1);
        const targets = {
            [Qt.Key_Up]: currentIndex - 1,
            [Qt.Key_Down]: currentIndex + 1,
            [Qt.Key_PageUp]: currentIndex - page,
            [Qt.Key_PageDown]: currentIndex + page,
            [Qt.Key_Home]: 0,
            [Qt.Key_End]: count - 1
        };
        if (event.key in targets && count > 0) {
            moveTo(targets[event.key]);
            movedByKey(event.modifiers);
            event.accepted = true;
        } else if (hasMenus
            && (event.key === Qt.Key_Menu || event.key === Qt.Key_F10 && event.modifiers === Qt.ShiftModifier)) {
            menuKeyPressed(currentIndex);
            event.accepted = true;
        }
    }
    Keys.onReturnPressed: event => choose(event)
    Keys.onEnterPressed: event => choose(event)

    // Clear of the ring.
    ScrollBar.vertical: VOXScrollBar {
        rightPadding: 4
        topPadding: 6
        bottomPadding: 6
    }

    VOXToolTip {
        objectName: "fullText"
        parent: root
        visible: root.hoveredRow !== null && root.hoveredRow.shortened
        fullText: root.hoveredRow ? root.hoveredRow.fullText : ""
        x: 8
        y: root.hoveredRow ? root.hoveredRow.y + root.hoveredRow.height - root.contentY : 0
    }

    // Neither ground nor ring scrolls away with the rows.
    Rectangle {
        parent: root
        anchors.fill: parent
        z: -1
        radius: VOXTheme.radiusControl
        color: VOXTheme.input
    }

    Rectangle {
        parent: root
        anchors.fill: parent
        z: 2
        radius: VOXTheme.radiusControl
        color: "transparent"
        border.width: root.activeFocus ? 2 : 1
        border.color: root.activeFocus ? VOXTheme.orangeBright : VOXTheme.border
    }
}
