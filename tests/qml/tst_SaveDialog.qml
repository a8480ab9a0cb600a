import QtQuick
import QtTest
import KvtEditor

// What is pressed and typed in Qt's own dialog for saving, and which file comes of it.
ViewTest {
    id: root

    // The library's list shows nothing of a folder with one of these in its name: it has no row to press.
    readonly property var unlisted: /[#?]|%[0-9A-F]{2}/

    // Each test has a folder of its own.
    property int number: 0

    name: "SaveDialog"

    function at(path: string): string {
        return bed.tempPath(number + "/" + path);
    }

    function write(path: string, size: int): void {
        bed.writeFile(number + "/" + path, size);
    }

    function folders_data(): var {
        return ["plain", "é f", "50%", "R&D <b>", "d%41", "e%20f", "g#h", "i?j"].map(
            folder => ({ tag: folder, folder: folder }));
    }

    function listedFolders_data(): var {
        return folders_data().filter(data => !unlisted.test(data.folder));
    }

    function itemsIn(item: var, matches: var): var {
        const own = item.visible && matches(item) ? [item] : [];
        return Array.from(item.children).reduce((found, child) => found.concat(itemsIn(child, matches)), own);
    }

    function button(text: string): var {
        return itemsIn(window.overlayItem, item => item.clicked !== undefined && item.text === text)[0];
    }

    function row(fileName: string): var {
        const isRow = item => item.fileModified !== undefined && item.fileName === fileName;
        tryVerify(() => itemsIn(window.overlayItem, isRow).length === 1, 5000, "There is no row " + fileName);
        render();
        return itemsIn(window.overlayItem, isRow)[0];
    }

    function nameField(): var {
        return find("fileNameTextField", window.overlayItem);
    }

    // In a folder of that name: orig.kvt, open, a.kvt, z.kvt, and a folder `inner` with a file `first.kvt`.
    function openSaveDialog(folder: string, more: var): var {
        ++number;
        if (more)
            write(more, 35);
        write(folder + "/inner/first.kvt", 32);
        write(folder + "/a.kvt", 33);
        write(folder + "/z.kvt", 34);
        write(folder + "/orig.kvt", 48);
        app.openKvt(at(folder + "/orig.kvt"));
        click("saveFileButton");
        const dialog = find("saveDialog");
        tryVerify(() => dialog.visible);
        if (!unlisted.test(folder))
            row("inner");
        compare(nameField().text, "orig.kvt");
        return dialog;
    }

    function enter(folder: string, file: string): void {
        mouseDoubleClickSequence(row(folder));
        row(file);
    }

    function retype(name: string): void {
        nameField().forceActiveFocus();
        nameField().selectAll();
        type(name);
        compare(nameField().text, name);
    }

    function verifySaved(dialog: var, path: string): void {
        app.setStatus("", -1);
        mouseClick(button("Save"));
        tryVerify(() => !dialog.visible);
        compare(app.status, "Saved.");
        compare(app.fileName, path.split("/").pop());
        verifySize(path, 48);
    }

    function verifySize(path: string, size: int): void {
        verify(bed.fileExists(at(path)), "there is no " + path);
        app.openKvt(at(path));
        compare(app.hexModel.byteCount, size, path);
    }

    function test_enteredFolderKeepsName_data() { return listedFolders_data(); }

    function test_enteredFolderKeepsName(data) {
        const dialog = openSaveDialog(data.folder);
        enter("inner", "first.kvt");
        tryCompare(nameField(), "text", "orig.kvt");
        verifySaved(dialog, data.folder + "/inner/orig.kvt");
        verifySize(data.folder + "/inner/first.kvt", 32);
    }

    function test_enteredFolderOfOddName_data() { return folders_data(); }

    function test_enteredFolderOfOddName(data) {
        const dialog = openSaveDialog("odd", "odd/" + data.folder + "/first.kvt");
        mouseDoubleClickSequence(row(data.folder));
        tryCompare(dialog, "currentFolder", bed.urlOf(at("odd/" + data.folder)));
        if (!unlisted.test(data.folder))
            row("first.kvt");
        tryCompare(nameField(), "text", "orig.kvt");
        verifySaved(dialog, "odd/" + data.folder + "/orig.kvt");
        verifySize("odd/" + data.folder + "/first.kvt", 35);
    }

    function test_typedNameGoesAlong_data() { return listedFolders_data(); }

    function test_typedNameGoesAlong(data) {
        const dialog = openSaveDialog(data.folder);
        retype("mine.kvt");
        enter("inner", "first.kvt");
        tryCompare(nameField(), "text", "mine.kvt");
        verifySaved(dialog, data.folder + "/inner/mine.kvt");
        verifySize(data.folder + "/inner/first.kvt", 32);
        verifySize(data.folder + "/orig.kvt", 48);
    }

    function test_folderEnteredByKey_data() { return listedFolders_data(); }

    function test_folderEnteredByKey(data) {
        const dialog = openSaveDialog(data.folder);
        mouseClick(row("inner"));
        keyClick(Qt.Key_Return);
        row("first.kvt");
        tryCompare(nameField(), "text", "orig.kvt");
        verifySaved(dialog, data.folder + "/inner/orig.kvt");
        verifySize(data.folder + "/inner/first.kvt", 32);
    }

    function test_parentFolderKeepsName_data() { return listedFolders_data(); }

    function test_parentFolderKeepsName(data) {
        const dialog = openSaveDialog(data.folder);
        enter("inner", "first.kvt");
        keyClick(Qt.Key_Up, Qt.AltModifier);
        row("z.kvt");
        tryCompare(nameField(), "text", "orig.kvt");
        retype("up.kvt");
        verifySaved(dialog, data.folder + "/up.kvt");
        verifySize(data.folder + "/a.kvt", 33);
    }

    // The button enters a folder that is chosen, and the name is there again.
    function test_chosenFolderIsEntered_data() { return listedFolders_data(); }

    function test_chosenFolderIsEntered(data) {
        const dialog = openSaveDialog(data.folder);
        mouseClick(row("inner"));
        tryCompare(nameField(), "text", "inner");
        mouseClick(button("Save") ?? button("Open"));
        row("first.kvt");
        tryCompare(nameField(), "text", "orig.kvt");
        verifySaved(dialog, data.folder + "/inner/orig.kvt");
        verifySize(data.folder + "/inner/first.kvt", 32);
    }

    function test_chosenFileIsTaken_data() { return listedFolders_data(); }

    function test_chosenFileIsTaken(data) {
        const dialog = openSaveDialog(data.folder);
        // The first row, which the library takes for chosen.
        mouseClick(row("a.kvt"));
        tryCompare(nameField(), "text", "a.kvt");
        mouseClick(row("z.kvt"));
        tryCompare(nameField(), "text", "z.kvt");
        verifySaved(dialog, data.folder + "/z.kvt");
    }

    // Opened again, the dialog is the same object.
    function test_openedAgain_data() { return [{ tag: "closed" }, { tag: "saved", save: true }]; }

    function test_openedAgain(data) {
        const dialog = openSaveDialog("plain");
        if (data.save) {
            verifySaved(dialog, "plain/orig.kvt");
        } else {
            mouseClick(button("Cancel"));
            tryVerify(() => !dialog.visible);
        }
        for (const name of ["z.kvt", "a.kvt"]) {
            click("saveFileButton");
            tryVerify(() => dialog.visible);
            row("inner");
            compare(nameField().text, "orig.kvt");
            mouseClick(row(name));
            tryCompare(nameField(), "text", name);
            render();
            compare(nameField().text, name);
            mouseClick(button("Cancel"));
            tryVerify(() => !dialog.visible);
        }
        click("saveFileButton");
        tryVerify(() => dialog.visible);
        enter("inner", "first.kvt");
        tryCompare(nameField(), "text", "orig.kvt");
        verifySaved(dialog, "plain/inner/orig.kvt");
        verifySize("plain/inner/first.kvt", 32);
    }

    function test_fileChosenByKeyIsTaken() {
        const dialog = openSaveDialog("plain");
        mouseClick(row("z.kvt"));
        tryCompare(nameField(), "text", "z.kvt");
        keyClick(Qt.Key_Up);
        tryCompare(nameField(), "text", "orig.kvt");
        // Past the folder.
        keyClick(Qt.Key_Up);
        keyClick(Qt.Key_Up);
        tryCompare(nameField(), "text", "a.kvt");
        verifySaved(dialog, "plain/a.kvt");
    }

    function test_fileChosenInEnteredFolder_data() { return listedFolders_data(); }

    function test_fileChosenInEnteredFolder(data) {
        const dialog = openSaveDialog(data.folder, data.folder + "/inner/second.kvt");
        enter("inner", "second.kvt");
        mouseClick(row("second.kvt"));
        tryCompare(nameField(), "text", "second.kvt");
        verifySaved(dialog, data.folder + "/inner/second.kvt");
        verifySize(data.folder + "/inner/first.kvt", 32);
    }

    function test_typedName_data() {
        const names = ["a%20b.kvt", "50%25.kvt", "50%.kvt", "#1 why?.kvt", "inner.kvt"];
        return ["plain", "d%41", "e%20f", "g#h"].reduce((rows, folder) => rows.concat(
            names.map(name => ({ tag: folder + "/" + name, folder: folder, name: name }))), []);
    }

    function test_typedName(data) {
        const dialog = openSaveDialog(data.folder);
        retype(data.name);
        verifySaved(dialog, data.folder + "/" + data.name);
    }

    function test_typedNameByEnter() {
        const dialog = openSaveDialog("d%41");
        retype("a%20b.kvt");
        keyClick(Qt.Key_Return);
        compare(nameField().text, "a%20b.kvt");
        verifySaved(dialog, "d%41/a%20b.kvt");
    }

    function test_pastedName() {
        const dialog = openSaveDialog("d%41");
        app.copyText("a%20b.kvt", "");
        nameField().forceActiveFocus();
        verify(nameField().activeFocus);
        nameField().selectAll();
        nameField().paste();
        compare(nameField().text, "a%20b.kvt");
        verifySaved(dialog, "d%41/a%20b.kvt");
    }

    function test_noName() {
        const dialog = openSaveDialog("plain");
        nameField().forceActiveFocus();
        nameField().selectAll();
        keyClick(Qt.Key_Delete);
        compare(nameField().text, "");
        verify(!button("Save").enabled);
        enter("inner", "first.kvt");
        tryCompare(nameField(), "text", "");
        mouseClick(button("Save"));
        verify(dialog.visible);
        dialog.close();
        verifySize("plain/inner/first.kvt", 32);
    }
}
