import QtQuick
import KvtEditor

// A test of what is pressed and typed in Qt's own dialogs for files and folders.
ViewTest {
    id: root

    // Each test has a folder of its own.
    property int number: 0

    function at(path: string): string {
        return fixture.tempPath(number + "/" + path);
    }

    function write(path: string, size: int): void {
        fixture.writeFile(number + "/" + path, size);
    }

    function folders_data(): var {
        return ["plain", "é f", "50%", "R&D <b>", "d%41", "e%20f", "g#h", "i?j"].map(
            folder => ({ tag: folder, folder: folder }));
    }

    function rows(): var {
        return itemsIn(window.overlayItem, item => item.fileModified !== undefined);
    }

    function row(fileName: string): var {
        const named = () => rows().filter(item => item.fileName === fileName);
        tryVerify(() => named().length === 1, 5000, "There is no row " + fileName);
        render();
        return named()[0];
    }

    // Marks a row with the arrow keys. They are in another order from Qt 6.8 on, folders first.
    function moveTo(fileName: string): void {
        row(fileName);
        const all = rows().sort((a, b) => a.y - b.y);
        const way = all.findIndex(item => item.fileName === fileName) - all.findIndex(item => item.highlighted);
        for (let i = 0; i < Math.abs(way); ++i)
            keyClick(way > 0 ? Qt.Key_Down : Qt.Key_Up);
        verifyMarked([fileName]);
    }

    function verifyMarked(names: var): void {
        const marked = () => rows().filter(item => item.highlighted).map(item => item.fileName);
        tryVerify(() => marked().join() === names.join(), 5000, "Not marked alone: " + names);
    }

    function showPath(): var {
        keyClick(Qt.Key_L, Qt.ControlModifier);
        const field = itemsIn(window.overlayItem, item => item.Accessible.name === "Path")[0];
        verify(field.activeFocus);
        return field;
    }

    function givePath(path: string): void {
        const field = showPath();
        app.copyText(path, "");
        field.selectAll();
        field.paste();
        compare(field.text, path);
        keyClick(Qt.Key_Return);
    }
}
