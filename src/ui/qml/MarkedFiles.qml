pragma Singleton

import QtQml

// The files marked in Qt's own dialog, which itself chooses no more than one.
QtObject {
    id: root

    // Whether the open dialog takes more than one.
    property bool several: false
    // Their urls.
    property var files: []
    // The row pressed last: Shift marks from there.
    property int from: 0
    property url pressed

    function begin(many: bool): void {
        several = many;
        files = [];
    }

    function isMarked(file: url): bool {
        return several && files.length > 1 && files.some(marked => String(marked) === String(file));
    }

    function press(model: var, row: int, modifiers: int): void {
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

    // All of them, but no folder.
    function markRows(model: var, first: int, last: int): void {
        const rows = Array.from({ length: last - first + 1 }, (_, i) => first + i);
        files = rows.filter(row => !model.isFolder(row)).map(row => model.get(row, "fileUrl"));
    }
}
