pragma ComponentBehavior: Bound

import QtQuick
import KvtEditor

// The list of rows. Only the rows in sight exist, and the place is a row number in double precision: item
// positions are 32-bit floats, in which the rows of a file beyond some megabytes would drift apart.
Rectangle {
    id: root

    required property HexModel hexModel
    required property HexGrid grid
    required property HexEditing editing
    readonly property HexCompare compare: editing.compare

    readonly property int rowHeight: 20
    readonly property real rowsInSight: height / rowHeight
    readonly property int rowCount: Math.max(1, Math.ceil(hexModel.byteCount / grid.bytesPerRow))
    readonly property real lastTop: Math.max(0, rowCount - rowsInSight)
    // The first row in sight; its fraction is the part that is scrolled away.
    property real topRow: 0

    color: VOXTheme.input
    radius: VOXTheme.radiusControl
    clip: true
    activeFocusOnTab: true

    Accessible.role: Accessible.List
    Accessible.name: "Bytes of the open file"
    Accessible.description: (editing.typesText ? "Types text" : "Types hex digits")
        + (editing.pendingDigit === "" ? "" : ". First digit " + editing.pendingDigit)
        + (editing.selectionText === "" ? "" : ". " + editing.selectionText)
    Accessible.focusable: true

    // AltGr is Ctrl and Alt on some systems.
    function typesCharacter(event: var): bool {
        const control = (event.modifiers & Qt.ControlModifier) !== 0;
        const alt = (event.modifiers & Qt.AltModifier) !== 0;
        const meta = (event.modifiers & Qt.MetaModifier) !== 0;
        return event.text >= " " && event.key !== Qt.Key_Delete && control === alt && !meta;
    }

    function scrollTo(top: real): void {
        topRow = Math.max(0, Math.min(top, lastTop));
    }

    // A row just out of sight comes in at the edge; one far away comes to the middle.
    function show(row: int): void {
        const above = topRow - row;
        const below = row + 1 - (topRow + rowsInSight);
        if (Math.max(above, below) > rowsInSight)
            scrollTo(row - rowsInSight / 2);
        else if (above > 0)
            scrollTo(row);
        else if (below > 0)
            scrollTo(row + 1 - rowsInSight);
    }

    // What was found is to be seen with its surroundings.
    function showInTheMiddle(row: int): void {
        const third = rowsInSight / 3;
        if (row < topRow + third || row + 1 > topRow + 2 * third)
            scrollTo(row + 0.5 - rowsInSight / 2);
    }

    function byteNear(x: real, y: real): int {
        const row = Math.max(0, Math.min(rowAt(y), rowCount - 1));
        return row * grid.bytesPerRow + grid.nearestByte(x);
    }

    function rowAt(y: real): int {
        return Math.floor(topRow + y / rowHeight);
    }

    function openMenu(row: int, x: real, y: real): void {
        menu.row = row;
        menu.popup(x, y);
    }

    // Below the row itself, which stays in sight.
    function openMenuOnCurrentRow(): void {
        const row = hexModel.currentRow;
        show(row);
        openMenu(row, grid.digitsX, (row + 1 - topRow) * rowHeight);
        menu.currentIndex = 0;
    }

    onLastTopChanged: scrollTo(topRow)

    Keys.onMenuPressed: openMenuOnCurrentRow()
    Keys.onPressed: event => {
        if (event.key === Qt.Key_F10 && event.modifiers === Qt.ShiftModifier) {
            openMenuOnCurrentRow();
            event.accepted = true;
            return;
        }
        const selects = (event.modifiers & Qt.ShiftModifier) !== 0;
        const modifiers = event.modifiers & ~(Qt.KeypadModifier | Qt.ShiftModifier);
        const control = modifiers === Qt.ControlModifier;
        const moves = {
            [Qt.Key_Left]: HexModel.Left,
            [Qt.Key_Right]: HexModel.Right,
            [Qt.Key_Up]: HexModel.Up,
            [Qt.Key_Down]: HexModel.Down,
            [Qt.Key_PageUp]: HexModel.PageUp,
            [Qt.Key_PageDown]: HexModel.PageDown,
            [Qt.Key_Home]: control ? HexModel.FileStart : HexModel.RowStart,
            [Qt.Key_End]: control ? HexModel.FileEnd : HexModel.RowEnd
        };
        const toAnEnd = event.key === Qt.Key_Home || event.key === Qt.Key_End;
        if (event.key in moves && (modifiers === Qt.NoModifier || control && toAnEnd)) {
            editing.endTyping();
            hexModel.moveCursor(moves[event.key], Math.max(1, Math.floor(rowsInSight) - 1), selects);
            show(hexModel.currentRow);
            event.accepted = true;
        } else if (event.key === Qt.Key_Backspace && modifiers === Qt.NoModifier) {
            event.accepted = editing.takeBackDigit();
        } else if (typesCharacter(event)) {
            editing.type(event.text);
            show(hexModel.currentRow);
            event.accepted = true;
        }
    }
    // The columns are one after the other in the order of the keyboard, which comes in at the first again.
    Keys.onTabPressed: event => {
        event.accepted = !editing.typesText;
        editing.typesText = !editing.typesText;
    }
    Keys.onBacktabPressed: event => {
        event.accepted = editing.typesText;
        editing.typesText = false;
    }
    Keys.onEscapePressed: event => event.accepted = editing.takeBackDigit()

    Connections {
        target: root.hexModel
        function onCursorChanged(): void {
            root.show(root.hexModel.currentRow);
        }
    }

    Connections {
        target: root.editing
        function onShown(): void {
            const row = root.hexModel.currentRow;
            if (row < root.topRow || row + 1 > root.topRow + root.rowsInSight)
                root.scrollTo(row + 0.5 - root.rowsInSight / 2);
        }
    }

    // The software renderer skips what an opaque rectangle covers, but not what a rounded one does.
    Rectangle {
        anchors { fill: parent; topMargin: root.radius; bottomMargin: root.radius }
        color: root.color
    }

    HexCanvas {
        objectName: "hexCanvas"
        anchors.fill: parent
        editing: root.editing
        topRow: root.topRow
        rowHeight: root.rowHeight
        digitsX: root.grid.digitsX
        charactersX: root.grid.charactersX
        otherDigitsX: root.grid.comparing ? root.grid.otherDigitsX : -1
        otherCharactersX: root.grid.otherCharactersX
        pitch: root.grid.pitch
        selectedColor: VOXTheme.selectedFill
        foundColor: VOXTheme.matchFill
        changedColor: VOXTheme.orangeBright
        differentColor: VOXTheme.differentFill
        bookmarkColor: VOXTheme.success

        Repeater {
            model: Math.ceil(root.rowsInSight) + 1

            HexRow {
                required property int index

                objectName: "hexRow" + index
                width: root.width
                height: root.rowHeight
                y: Math.round((row - root.topRow) * root.rowHeight)
                visible: row < root.rowCount
                hexModel: root.hexModel
                editing: root.editing
                row: Math.floor(root.topRow) + index
                current: row === root.hexModel.currentRow
                grid: root.grid
            }
        }
    }

    HexMarks {
        anchors.fill: parent
        typesText: root.editing.typesText
        hexModel: root.hexModel
        grid: root.grid
        topRow: root.topRow
        rowsInSight: root.rowsInSight
        rowHeight: root.rowHeight
    }

    // The half of a byte that is typed.
    Rectangle {
        objectName: "pendingDigit"
        visible: root.editing.pendingDigit !== ""
        x: root.grid.digitsX + 3 * (root.hexModel.cursor % root.grid.bytesPerRow) * root.grid.pitch - 2
        y: Math.round((root.hexModel.currentRow - root.topRow) * root.rowHeight) + 1
        width: 2 * root.grid.pitch + 4
        height: root.rowHeight - 2
        radius: 2
        color: VOXTheme.input
        border.width: 1
        border.color: VOXTheme.orangeBright

        Text {
            x: 2
            height: parent.height
            text: root.editing.pendingDigit + "_"
            textFormat: Text.PlainText
            color: VOXTheme.orangeBright
            font: root.grid.font
            verticalAlignment: Text.AlignVCenter
            Accessible.ignored: true
        }
    }

    MouseArea {
        id: pointer

        // What is shorter is a click with an unsteady hand.
        readonly property int dragDistance: Application.styleHints.startDragDistance
        property point start: Qt.point(0, 0)
        property int firstByte: 0
        property bool keepsAnchor: false
        property bool dragged: false

        function extend(): void {
            const target = root.byteNear(mouseX, mouseY);
            if (!dragged) {
                if (target === firstByte || Math.hypot(mouseX - start.x, mouseY - start.y) < dragDistance)
                    return;
                dragged = true;
                if (!keepsAnchor)
                    root.hexModel.cursor = firstByte;
            }
            root.hexModel.selectTo(target);
        }

        anchors { fill: parent; rightMargin: bar.width + (map.visible ? map.width : 0) }
        acceptedButtons: Qt.LeftButton | Qt.RightButton
        onPressed: mouse => {
            root.forceActiveFocus(Qt.MouseFocusReason);
            root.editing.endTyping();
            dragged = false;
            keepsAnchor = (mouse.modifiers & Qt.ShiftModifier) !== 0;
            start = Qt.point(mouse.x, mouse.y);
            firstByte = root.byteNear(mouse.x, mouse.y);
        }
        onPositionChanged: {
            if (pressedButtons & Qt.LeftButton)
                extend();
        }
        onClicked: mouse => {
            const row = root.rowAt(mouse.y);
            if (row >= root.rowCount || dragged)
                return;
            if (mouse.button === Qt.RightButton)
                root.openMenu(row, mouse.x, mouse.y);
            else if (mouse.modifiers & Qt.ShiftModifier)
                root.hexModel.selectTo(root.byteNear(mouse.x, mouse.y));
            else
                root.hexModel.clickRow(row);
        }
        onDoubleClicked: mouse => {
            const row = root.rowAt(mouse.y);
            const column = root.grid.byteAt(mouse.x);
            if (mouse.button !== Qt.LeftButton || row >= root.rowCount || column < 0)
                return;
            root.hexModel.cursor = row * root.grid.bytesPerRow + column;
            root.editing.typesText = root.grid.inCharacters(mouse.x);
        }
        onWheel: wheel => {
            const pixels = wheel.pixelDelta.y;
            root.scrollTo(root.topRow - (pixels !== 0 ? pixels / root.rowHeight : wheel.angleDelta.y / 40));
        }

        // Beyond an edge the rows scroll on under a pointer that rests.
        Timer {
            interval: 40
            repeat: true
            running: pointer.dragged && pointer.pressed && (pointer.mouseY < 0 || pointer.mouseY > pointer.height)
            onTriggered: pointer.extend()
        }
    }

    HexMenu {
        id: menu
        objectName: "hexMenu"
        editing: root.editing
        line: HexLine {
            hexModel: root.hexModel
            row: menu.row
        }
    }

    // The row that the menu is about, which need not be the cursor's; a selection shows itself.
    Rectangle {
        objectName: "menuRow"
        visible: menu.visible && root.hexModel.selectionLength === 0
        y: visible ? Math.round((menu.row - root.topRow) * root.rowHeight) : 0
        width: root.width
        height: root.rowHeight
        color: "transparent"
        border.width: 1
        border.color: VOXTheme.muted
    }

    HexMap {
        id: map
        objectName: "hexMap"
        anchors { right: bar.left; top: parent.top; bottom: parent.bottom; margins: 2 }
        width: 8
        visible: root.grid.comparing
        compare: root.compare
        onChosen: part => root.scrollTo(part * root.rowCount - root.rowsInSight / 2)
    }

    VOXScrollBar {
        id: bar
        objectName: "hexScrollBar"
        anchors { right: parent.right; top: parent.top; bottom: parent.bottom }
        orientation: Qt.Vertical
        size: Math.min(1, root.rowsInSight / root.rowCount)
        onPositionChanged: {
            if (pressed)
                root.scrollTo(position * root.rowCount);
        }

        Binding on position {
            when: !bar.pressed
            value: root.topRow / root.rowCount
            restoreMode: Binding.RestoreNone
        }
    }

    Rectangle {
        anchors.fill: parent
        radius: parent.radius
        color: "transparent"
        border.width: root.activeFocus ? 2 : 1
        border.color: root.activeFocus ? VOXTheme.orangeBright : VOXTheme.border
    }
}
