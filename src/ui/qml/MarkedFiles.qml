pragma Singleton

import QtQml

// The files marked in Qt's own dialog, which itself chooses no more than one.
QtObject {
    // Whether the open dialog takes more than one.
    property bool several: false
    // Their urls.
    property var files: []
    // The row from which Shift marks.
    property int from: 0
    // The file of the row that was pressed last.
    property url pressed
    // The files before the last press.
    property var earlier: []

    function begin(many: bool): void {
        several = many;
        clear();
    }

    function clear(): void {
        files = [];
        from = 0;
        pressed = "";
    }

    // A choice without a press, as by an arrow key, ends the marks.
    function choose(file: url, row: int): void {
        if (String(file) === String(pressed))
            return;
        clear();
        from = Math.max(0, row);
    }

    function isMarked(file: url): bool {
        return several && files.some(marked => String(marked) === String(file));
    }

    function press(model: var, row: int, modifiers: int): void {
        earlier = files;
        if (model.isFolder(row))
            return;
        pressed = model.get(row, "fileUrl");
        if (modifiers & Qt.ShiftModifier) {
            markRows(model, Math.min(from, row), Math.max(from, row));
            return;
        }
        const others = files.filter(file => String(file) !== String(pressed));
        const wasMarked = others.length < files.length;
        from = row;
        if (!(modifiers & Qt.ControlModifier))
            files = [pressed];
        else
            files = wasMarked ? others : [...others, pressed];
    }

    // The press became something else, such as a flick of the list.
    function takeBack(): void {
        files = earlier;
    }

    // Both rows and all in between, but no folder.
    function markRows(model: var, first: int, last: int): void {
        const end = Math.min(last, model.count - 1);
        const rows = Array.from({ length: end - first + 1 }, (_, i) => first + i);
        files = rows.filter(row => !model.isFolder(row)).map(row => model.get(row, "fileUrl"));
    }
}
