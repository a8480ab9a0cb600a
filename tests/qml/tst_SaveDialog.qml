import QtQuick
import QtTest
import KvtEditor

// What is pressed and typed in Qt's own dialog for saving, and which file comes of it.
DialogTest {
    name: "SaveDialog"

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

    function paste(name: string): void {
        app.copyText(name, "");
        nameField().forceActiveFocus();
        verify(nameField().activeFocus);
        nameField().selectAll();
        nameField().paste();
        compare(nameField().text, name);
    }

    // Qt's own dialogs ask from 6.8 on, whichever file it is.
    function asks(path: string): bool {
        return fixture.fileExists(at(path)) && (FilePaths.dialogAsks || app.replacesOtherFile(at(path)));
    }

    function verifySaved(dialog: var, path: string): void {
        const replaces = asks(path);
        app.setStatus("", -1);
        mouseClick(button("Save"));
        if (replaces)
            confirmOverwriting();
        tryVerify(() => !dialog.visible);
        compare(app.status, "Saved.");
        compare(app.fileName, path.split("/").pop());
        verifySize(path, 48);
    }

    function verifySize(path: string, size: int): void {
        verify(fixture.fileExists(at(path)), "there is no " + path);
        app.openKvt(at(path));
        compare(app.hexModel.byteCount, size, path);
    }

    function test_enteredFolderKeepsName_data() { return folders_data(); }

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
        tryCompare(dialog, "currentFolder", fixture.urlOf(at("odd/" + data.folder)));
        row("first.kvt");
        tryCompare(nameField(), "text", "orig.kvt");
        verifySaved(dialog, "odd/" + data.folder + "/orig.kvt");
        verifySize("odd/" + data.folder + "/first.kvt", 35);
    }

    function test_typedNameGoesAlong_data() { return folders_data(); }

    function test_typedNameGoesAlong(data) {
        const dialog = openSaveDialog(data.folder);
        retype("mine.kvt");
        enter("inner", "first.kvt");
        tryCompare(nameField(), "text", "mine.kvt");
        verifySaved(dialog, data.folder + "/inner/mine.kvt");
        verifySize(data.folder + "/inner/first.kvt", 32);
        verifySize(data.folder + "/orig.kvt", 48);
    }

    function test_folderEnteredByKey_data() { return folders_data(); }

    function test_folderEnteredByKey(data) {
        const dialog = openSaveDialog(data.folder);
        mouseClick(row("inner"));
        keyClick(Qt.Key_Return);
        row("first.kvt");
        tryCompare(nameField(), "text", "orig.kvt");
        verifySaved(dialog, data.folder + "/inner/orig.kvt");
        verifySize(data.folder + "/inner/first.kvt", 32);
    }

    function test_parentFolderKeepsName_data() { return folders_data(); }

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
    function test_chosenFolderIsEntered_data() { return folders_data(); }

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

    // Its second half would save over the file of that name in there.
    function test_doubleClickOnSaveEntersOnly() {
        const dialog = openSaveDialog("plain", "plain/inner/orig.kvt");
        mouseClick(row("inner"));
        tryCompare(nameField(), "text", "inner");
        app.setStatus("", -1);
        mouseDoubleClickSequence(button("Save") ?? button("Open"));
        row("first.kvt");
        verify(dialog.visible);
        compare(app.status, "");
        mouseClick(button("Cancel"));
        tryVerify(() => !dialog.visible);
        verifySize("plain/inner/orig.kvt", 35);
    }

    function test_chosenFileIsTaken_data() { return folders_data(); }

    function test_chosenFileIsTaken(data) {
        const dialog = openSaveDialog(data.folder);
        // The first row, which Qt takes for chosen.
        mouseClick(row("a.kvt"));
        tryCompare(nameField(), "text", "a.kvt");
        mouseClick(row("z.kvt"));
        tryCompare(nameField(), "text", "z.kvt");
        verifySaved(dialog, data.folder + "/z.kvt");
    }

    // The open file may be saved in place; any other one is asked about, and No leads back to the dialog.
    function test_asksBeforeItReplaces() {
        const dialog = openSaveDialog("plain");
        mouseClick(row("z.kvt"));
        tryCompare(nameField(), "text", "z.kvt");
        mouseClick(button("Save"));
        tryVerify(() => button("No") !== undefined);
        compare(app.status.includes("Saved"), false);
        render();
        mouseClick(button("No"));
        tryVerify(() => dialog.visible && button("No") === undefined);
        verify(app.fileName !== "z.kvt");
        tryCompare(nameField(), "text", "z.kvt");
        verifySaved(dialog, "plain/z.kvt");
    }

    function test_defaultSuffix_data() {
        return [
            { tag: "none", typed: "mytune", saved: "mytune.kvt" },
            { tag: "none-in-a-folder-with-a-dot", folder: "tunes.2024", typed: "mytune", saved: "mytune.kvt" },
            { tag: "none-of-a-file-that-is-there", typed: "z", saved: "z.kvt", replaces: true },
            { tag: "hidden", typed: ".mytune", saved: ".mytune.kvt" },
            { tag: "other", typed: "mytune.bin", saved: "mytune.bin" },
            { tag: "same", typed: "mytune.KVT", saved: "mytune.KVT" }
        ];
    }

    function test_defaultSuffix(data) {
        const folder = data.folder ?? "plain";
        const dialog = openSaveDialog(folder);
        app.setStatus("", -1);
        retype(data.typed);
        keyClick(Qt.Key_Return);
        if (data.replaces)
            confirmOverwriting();
        tryVerify(() => !dialog.visible);
        compare(app.status, "Saved.");
        compare(app.fileName, data.saved);
        verifySize(folder + "/" + data.saved, 48);
    }

    function test_homeFolder() {
        const dialog = openSaveDialog("plain");
        retype("~/at home.kvt");
        keyClick(Qt.Key_Return);
        tryVerify(() => !dialog.visible);
        compare(app.status, "Saved.");
        app.openKvt(app.expandedPath("~/at home.kvt"));
        compare(app.hexModel.byteCount, 48);
        compare(app.expandedPath("~"), app.expandedPath("~/").slice(0, -1));
        compare(app.expandedPath("~a/b"), "~a/b");
    }

    function test_nameIsReadyToBeTyped() {
        openSaveDialog("plain");
        const field = nameField();
        tryVerify(() => field.activeFocus);
        tryCompare(field, "selectedText", "orig");
    }

    function test_nameStaysReadyWhenItsRowComesAgain() {
        openSaveDialog("plain");
        const field = nameField();
        tryVerify(() => field.activeFocus);
        fixture.removeFile(number + "/plain/orig.kvt");
        tryVerify(() => rows().every(item => item.fileName !== "orig.kvt"));
        write("plain/orig.kvt", 48);
        row("orig.kvt");
        tryVerify(() => field.activeFocus);
        type("x");
        compare(field.text, "x.kvt");
    }

    // In a folder that the list has to read first.
    function test_nameIsReadyInAnotherFolder() {
        openSaveDialog("plain");
        mouseClick(button("Cancel"));
        for (let i = 0; i < 500; ++i)
            write("many/" + i + ".kvt", 1);
        write("many/inner/first.kvt", 1);
        app.openKvt(at("many/7.kvt"));
        click("saveFileButton");
        tryVerify(() => rows().some(item => /^\d+\.kvt$/.test(item.fileName)));
        tryVerify(() => nameField().activeFocus);
        type("x");
        compare(nameField().text, "x.kvt");
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
        for (const name of ["orig.kvt", "a.kvt"]) {
            moveTo(name);
            tryCompare(nameField(), "text", name);
        }
        verifySaved(dialog, "plain/a.kvt");
    }

    function test_fileChosenInEnteredFolder_data() { return folders_data(); }

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
        app.setStatus("", -1);
        keyClick(Qt.Key_Return);
        tryVerify(() => !dialog.visible);
        compare(app.status, "Saved.");
        verifySize("d%41/a%20b.kvt", 48);
    }

    function test_pastedName() {
        const dialog = openSaveDialog("d%41");
        paste("a%20b.kvt");
        verifySaved(dialog, "d%41/a%20b.kvt");
    }

    function test_path_data() {
        const paths = [
            { tag: "root", text: () => at("far/a%20b #1.kvt"), saved: "far/a%20b #1.kvt" },
            { tag: "url", text: () => fixture.encodedUrlOf(at("far/100% #1.kvt")), saved: "far/100% #1.kvt" },
            { tag: "readable-url", text: () => "file://" + at("far/a b #1.kvt"), saved: "far/a b #1.kvt" },
            { tag: "below", text: () => "sub/a%20b #1.kvt", saved: "d%41/sub/a%20b #1.kvt" },
            { tag: "beside", text: () => "../a%20b.kvt", saved: "a%20b.kvt" }
        ];
        return paths.reduce((all, path) => all.concat(
            { tag: path.tag + ", typed", text: path.text, saved: path.saved, enterText: retype },
            { tag: path.tag + ", pasted", text: path.text, saved: path.saved, enterText: paste }), []);
    }

    function test_path(data) {
        const dialog = openSaveDialog("d%41");
        data.enterText(data.text());
        verifySaved(dialog, data.saved);
        verify(!fixture.fileExists(at("d%41") + at("far")));
    }

    // The dialog looks at the text again when the field is left.
    function test_leftPathStays() {
        const dialog = openSaveDialog("plain");
        retype(at("far/x.kvt"));
        keyClick(Qt.Key_Tab);
        verify(!nameField().activeFocus);
        compare(nameField().text, at("far/x.kvt"));
        const list = find("fileDialogListView", window.overlayItem);
        mouseClick(list, list.width / 2, list.height - 5);
        compare(nameField().text, at("far/x.kvt"));
        verifySaved(dialog, "far/x.kvt");
    }

    function test_pathGoesAlong_data() {
        return [
            { tag: "root", text: () => at("far/x.kvt"), saved: "far/x.kvt" },
            { tag: "below", text: () => "sub/x.kvt", saved: "plain/inner/sub/x.kvt" }
        ];
    }

    function test_pathGoesAlong(data) {
        const dialog = openSaveDialog("plain");
        retype(data.text());
        enter("inner", "first.kvt");
        tryCompare(nameField(), "text", data.text());
        verifySaved(dialog, data.saved);
        verifySize("plain/inner/first.kvt", 32);
    }

    function test_rowInsteadOfPath() {
        const dialog = openSaveDialog("plain");
        retype(at("far/x.kvt"));
        mouseClick(row("z.kvt"));
        tryCompare(nameField(), "text", "z.kvt");
        verifySaved(dialog, "plain/z.kvt");
        verify(!fixture.fileExists(at("far")));
    }

    function test_pathOfAFolderIsEntered() {
        const dialog = openSaveDialog("plain");
        retype(at("plain/inner"));
        mouseClick(button("Save"));
        row("first.kvt");
        verify(dialog.visible);
        retype("new.kvt");
        verifySaved(dialog, "plain/inner/new.kvt");
    }

    // The text has done what it said: the file keeps the name that it had before.
    function test_typedFolderIsEntered_data() {
        return [
            { tag: "name", text: () => "inner", entered: "inner" },
            { tag: "slash", text: () => "inner/", entered: "inner/" },
            { tag: "below", text: () => "./inner", entered: "./inner" },
            { tag: "root", text: () => at("e%20f/inner"), entered: "inner" },
            { tag: "url", text: () => fixture.encodedUrlOf(at("e%20f")) + "/inner", entered: "inner" },
            { tag: "parent", text: () => "..", entered: ".." },
            { tag: "same", text: () => ".", entered: "." },
            { tag: "return", text: () => "inner", entered: "inner", key: Qt.Key_Return },
            { tag: "left-first", text: () => "inner", entered: "inner", key: Qt.Key_Tab }
        ];
    }

    function test_typedFolderIsEntered(data) {
        const dialog = openSaveDialog("e%20f");
        const before = String(dialog.currentFolder);
        retype(data.text());
        if (data.key)
            keyClick(data.key);
        if (data.key !== Qt.Key_Return)
            mouseClick(button("Save"));
        tryVerify(() => String(dialog.currentFolder) !== before);
        verify(dialog.visible);
        tryCompare(nameField(), "text", "orig.kvt");
        render();
        compare(nameField().text, "orig.kvt");
        verifySaved(dialog, "e%20f/" + data.entered + "/orig.kvt");
        verifySize("e%20f/inner/first.kvt", 32);
    }

    function test_typedFolderAfterAnotherName_data() {
        return [
            { tag: "chosen", name: () => mouseClick(row("z.kvt")), file: "z.kvt" },
            { tag: "gone-along", file: "mine.kvt",
                name: () => {
                    retype("mine.kvt");
                    keyClick(Qt.Key_Up, Qt.AltModifier);
                    row("plain");
                    retype("plain");
                    mouseClick(button("Save"));
                    row("inner");
                } }
        ];
    }

    function test_typedFolderAfterAnotherName(data) {
        const dialog = openSaveDialog("plain");
        data.name();
        tryCompare(nameField(), "text", data.file);
        retype("inner");
        mouseClick(button("Save"));
        row("first.kvt");
        tryCompare(nameField(), "text", data.file);
        verifySaved(dialog, "plain/inner/" + data.file);
        verifySize("plain/z.kvt", 34);
    }

    // A path is given above the list as well, and says what to save as.
    function test_pathAbove_data() {
        return [
            { tag: "there", path: "plain/z.kvt" },
            { tag: "elsewhere", path: "far/a%20b #1.kvt", write: true },
            { tag: "new", path: "plain/inner/new.kvt" }
        ];
    }

    function test_pathAbove(data) {
        const dialog = openSaveDialog("plain", data.write ? data.path : "");
        app.setStatus("", -1);
        const replaces = asks(data.path);
        givePath(at(data.path));
        if (replaces && !FilePaths.dialogAsks)
            confirmOverwriting();
        tryVerify(() => !dialog.visible);
        compare(app.status, "Saved.");
        verifySize(data.path, 48);
        verifySize("plain/a.kvt", 33);
    }

    function test_noPathAbove() {
        const dialog = openSaveDialog("plain");
        showPath().selectAll();
        keyClick(Qt.Key_Delete);
        keyClick(Qt.Key_Return);
        verify(dialog.visible);
        keyClick(Qt.Key_Escape);
        verifySaved(dialog, "plain/orig.kvt");
    }

    // The list makes its rows anew then.
    function test_folderGrowsMeanwhile_data() {
        return [
            { tag: "file-chosen", chosen: "z.kvt", saved: "plain/z.kvt" },
            { tag: "nothing-chosen", saved: "plain/orig.kvt" }
        ];
    }

    function test_folderGrowsMeanwhile(data) {
        const dialog = openSaveDialog("plain");
        if (data.chosen) {
            mouseClick(row(data.chosen));
            tryCompare(nameField(), "text", data.chosen);
        }
        write("plain/aaa.kvt", 36);
        row("aaa.kvt");
        tryVerify(() => rows().filter(item => item.highlighted).every(item => item.fileName === nameField().text));
        compare(nameField().text, data.chosen ?? "orig.kvt");
        verifySaved(dialog, data.saved);
        verifySize("plain/aaa.kvt", 36);
        verifySize("plain/a.kvt", 33);
    }

    // A service can give such a name to a file that it sends.
    function test_halfACharacter_data() {
        return [
            { tag: "first", name: "x\uD800.kvt", saved: "x\uFFFD.kvt" },
            { tag: "second", name: "\uDC00x.kvt", saved: "\uFFFDx.kvt" },
            { tag: "halves-after-a-pair", name: "\u{1F600}\uD83D\uD83D.kvt", saved: "\u{1F600}\uFFFD\uFFFD.kvt" }
        ];
    }

    function test_halfACharacter(data) {
        ++number;
        write("plain/" + data.name, 48);
        app.openKvt(at("plain/" + data.name));
        compare(app.fileName, data.name);
        const dialog = find("saveDialog");
        keyClick(Qt.Key_S, Qt.ControlModifier);
        tryVerify(() => dialog.visible);
        compare(nameField().text, data.saved);
        verifySaved(dialog, "plain/" + data.saved);
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
