import QtQuick
import KvtEditor

// A test of what is pressed and typed in our own dialog for files and folders.
ViewTest {
    id: root

    // Each test has a folder of its own.
    property int number: 0

    ownFileDialogs: true

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

    function isOpen(): bool {
        return button("Cancel") !== undefined;
    }

    function nameField(): var {
        return find("chooserName", window.overlayItem);
    }

    function acceptButton(): var {
        return find("chooserAccept", window.overlayItem);
    }

    // Those that are made, and not kept for later.
    function rows(): var {
        const list = find("chooserList", window.overlayItem);
        return Array.from({ length: list.count }, (_, row) => list.itemAtIndex(row)).filter(item => item !== null);
    }

    function row(fileName: string): var {
        const named = () => rows().filter(item => item.name === fileName);
        tryVerify(() => named().length === 1, 5000, "There is no row " + fileName);
        render();
        return named()[0];
    }

    function press(fileName: string, modifiers: var): void {
        mouseClick(row(fileName), undefined, undefined, Qt.LeftButton, modifiers ?? Qt.NoModifier);
    }

    function enter(folder: string, within: string): void {
        mouseDoubleClickSequence(row(folder));
        row(within);
        verifyMarked([]);
    }

    function shownFolder(): string {
        const parts = itemsIn(window.overlayItem, item => /^chooserFolder\d/.test(item.objectName));
        return parts.sort((a, b) => a.x - b.x).map(item => item.text).join("/").replace("//", "/");
    }

    function verifyMarked(names: var): void {
        const marked = () => rows().filter(item => item.marked).map(item => item.name).sort();
        tryVerify(() => marked().join() === names.join(), 5000, "Not marked alone: " + names);
    }

    function retype(text: string): void {
        nameField().forceActiveFocus();
        nameField().selectAll();
        app.copyText(text, "");
        nameField().paste();
        compare(nameField().text, text);
    }

    function cancel(): void {
        mouseClick(button("Cancel"));
        tryVerify(() => !isOpen());
    }

    function accept(): void {
        verify(acceptButton().enabled);
        mouseClick(acceptButton());
    }
}
