import QtQuick
import QtTest
import KvtEditor

// What is pressed and typed in our own dialog for saving, and which file comes of it.
ChooserTest {
    name: "SaveChooser"

    // In a folder of that name: orig.kvt, open, a.kvt, z.kvt, and a folder `inner` with a file `first.kvt`.
    function openChooser(folder: string, more: var): void {
        ++number;
        if (more)
            write(more, 35);
        write(folder + "/inner/first.kvt", 32);
        write(folder + "/a.kvt", 33);
        write(folder + "/z.kvt", 34);
        write(folder + "/orig.kvt", 48);
        app.openKvt(at(folder + "/orig.kvt"));
        app.setStatus("", -1);
        click("saveFileButton");
        row("inner");
        compare(nameField().text, "orig.kvt");
    }

    function verifySaved(path: string, press: var): void {
        const replaces = fixture.fileExists(at(path)) && app.replacesOtherFile(at(path));
        app.setStatus("", -1);
        (press ?? accept)();
        if (replaces)
            confirmOverwriting();
        tryVerify(() => !isOpen());
        compare(app.status, "Saved.");
        compare(app.fileName, path.split("/").pop());
        verifySize(path, 48);
    }

    function verifySize(path: string, size: int): void {
        verify(fixture.fileExists(at(path)), "there is no " + path);
        app.openKvt(at(path));
        compare(app.hexModel.byteCount, size, path);
    }

    // What is typed first replaces the name but for its suffix.
    function test_nameIsReadyToBeTyped() {
        openChooser("plain");
        verify(nameField().activeFocus);
        compare(nameField().selectedText, "orig");
        fixture.removeFile(number + "/plain/orig.kvt");
        tryVerify(() => rows().every(item => item.name !== "orig.kvt"));
        write("plain/orig.kvt", 48);
        row("orig.kvt");
        verify(nameField().activeFocus);
        type("x");
        compare(nameField().text, "x.kvt");
        verifySaved("plain/x.kvt", () => keyClick(Qt.Key_Return));
    }

    function test_enteredFolderKeepsName_data() { return folders_data(); }

    function test_enteredFolderKeepsName(data) {
        openChooser(data.folder);
        enter("inner", "first.kvt");
        compare(nameField().text, "orig.kvt");
        verifySaved(data.folder + "/inner/orig.kvt");
        verifySize(data.folder + "/inner/first.kvt", 32);
    }

    function test_enteredFolderOfOddName_data() { return folders_data(); }

    function test_enteredFolderOfOddName(data) {
        openChooser("odd", "odd/" + data.folder + "/first.kvt");
        press(data.folder);
        compare(nameField().text, "orig.kvt");
        keyClick(Qt.Key_Return);
        row("first.kvt");
        verifySaved("odd/" + data.folder + "/orig.kvt");
        verifySize("odd/" + data.folder + "/first.kvt", 35);
    }

    function test_typedNameGoesAlong() {
        openChooser("plain");
        retype("mine.kvt");
        enter("inner", "first.kvt");
        compare(nameField().text, "mine.kvt");
        keyClick(Qt.Key_Up, Qt.AltModifier);
        row("z.kvt");
        compare(nameField().text, "mine.kvt");
        verifySaved("plain/mine.kvt");
        verifySize("plain/orig.kvt", 48);
    }

    // The button enters a folder that is marked. The second half of a double click would save in there.
    function test_doubleClickOnSaveEntersOnly() {
        openChooser("plain", "plain/inner/orig.kvt");
        press("inner");
        mouseDoubleClickSequence(acceptButton());
        row("first.kvt");
        verify(isOpen());
        compare(app.status, "");
        cancel();
        verifySize("plain/inner/orig.kvt", 35);
    }

    function test_chosenFile_data() { return folders_data(); }

    function test_chosenFile(data) {
        openChooser(data.folder);
        press("a.kvt");
        compare(nameField().text, "a.kvt");
        press("z.kvt");
        compare(nameField().text, "z.kvt");
        verifySaved(data.folder + "/z.kvt");
        verifySize(data.folder + "/a.kvt", 33);
    }

    function test_chosenByKeys() {
        openChooser("plain");
        keyClick(Qt.Key_Down);
        verify(!nameField().activeFocus);
        keyClick(Qt.Key_End);
        compare(nameField().text, "z.kvt");
        verifySaved("plain/z.kvt", () => keyClick(Qt.Key_Return));
    }

    // The open file may be saved in place; any other one is asked about, and No leads back.
    function test_asksBeforeItReplaces() {
        openChooser("plain");
        enter("inner", "first.kvt");
        press("first.kvt");
        accept();
        tryVerify(() => button("No") !== undefined);
        verify(!app.status.includes("Saved"));
        render();
        mouseClick(button("No"));
        tryVerify(() => isOpen() && button("No") === undefined);
        compare(app.fileName, "orig.kvt");
        compare(shownFolder(), at("plain/inner"));
        compare(nameField().text, "first.kvt");
        verifySaved("plain/inner/first.kvt");
    }

    function test_suffix_data() {
        return [
            { tag: "none", typed: "mytune", saved: "mytune.kvt" },
            { tag: "none-in-a-folder-with-a-dot", folder: "tunes.2024", typed: "mytune", saved: "mytune.kvt" },
            { tag: "none-of-a-file-that-is-there", typed: "z", saved: "z.kvt" },
            { tag: "hidden", typed: ".mytune", saved: ".mytune.kvt" },
            { tag: "other", typed: "mytune.bin", saved: "mytune.bin" },
            { tag: "same", typed: "mytune.KVT", saved: "mytune.KVT" }
        ];
    }

    function test_suffix(data) {
        const folder = data.folder ?? "plain";
        openChooser(folder);
        retype(data.typed);
        verifySaved(folder + "/" + data.saved, () => keyClick(Qt.Key_Return));
    }

    function test_typed_data() {
        const names = ["a%20b.kvt", "50%25.kvt", "50%.kvt", "#1 why?.kvt", "inner.kvt"];
        const paths = [
            { tag: "root", text: () => at("far/a%20b #1.kvt"), saved: "far/a%20b #1.kvt" },
            { tag: "url", text: () => fixture.encodedUrlOf(at("far/100% #1.kvt")), saved: "far/100% #1.kvt" },
            { tag: "readable-url", text: () => "file://" + at("far/a b #1.kvt"), saved: "far/a b #1.kvt" },
            { tag: "below", text: () => "sub/a%20b #1.kvt", saved: "d%41/sub/a%20b #1.kvt" },
            { tag: "beside", text: () => "../a%20b.kvt", saved: "a%20b.kvt" }
        ];
        return names.map(name => ({ tag: name, text: () => name, saved: "d%41/" + name })).concat(paths);
    }

    function test_typed(data) {
        openChooser("d%41");
        retype(data.text());
        verifySaved(data.saved);
        verify(!fixture.fileExists(at("d%41") + at("far")));
    }

    function test_homeFolder() {
        openChooser("plain");
        retype("~/at home.kvt");
        keyClick(Qt.Key_Return);
        tryVerify(() => !isOpen());
        compare(app.status, "Saved.");
        app.openKvt(app.expandedPath("~/at home.kvt"));
        compare(app.hexModel.byteCount, 48);
        compare(app.expandedPath("~"), app.expandedPath("~/").slice(0, -1));
        compare(app.expandedPath("~a/b"), "~a/b");
    }

    // A row that is pressed takes the place of what was typed.
    function test_rowInsteadOfPath() {
        openChooser("plain");
        retype(at("far/x.kvt"));
        press("z.kvt");
        compare(nameField().text, "z.kvt");
        verifySaved("plain/z.kvt");
        verify(!fixture.fileExists(at("far")));
    }

    // The text has done what it said: the file keeps the name that it had before.
    function test_typedFolderIsEntered_data() {
        return [
            { tag: "name", text: () => "inner", entered: "e%20f/inner" },
            { tag: "slash", text: () => "inner/", entered: "e%20f/inner" },
            { tag: "below", text: () => "./inner", entered: "e%20f/inner" },
            { tag: "root", text: () => at("e%20f/inner"), entered: "e%20f/inner" },
            { tag: "parent", text: () => "../", entered: "" },
            { tag: "same", text: () => ".", entered: "e%20f" }
        ];
    }

    function test_typedFolderIsEntered(data) {
        openChooser("e%20f");
        retype(data.text());
        keyClick(Qt.Key_Return);
        tryVerify(() => shownFolder() === at(data.entered).replace(/\/$/, ""));
        compare(nameField().text, "orig.kvt");
        verifySaved((data.entered + "/orig.kvt").replace(/^\//, ""));
        verifySize("e%20f/inner/first.kvt", 32);
    }

    function test_typedFolderAfterAnotherName_data() {
        return [
            { tag: "chosen", name: () => press("z.kvt"), file: "z.kvt" },
            { tag: "gone-along", file: "mine.kvt",
                name: () => {
                    retype("mine.kvt");
                    keyClick(Qt.Key_Up, Qt.AltModifier);
                    enter("plain", "z.kvt");
                } }
        ];
    }

    function test_typedFolderAfterAnotherName(data) {
        openChooser("plain");
        data.name();
        compare(nameField().text, data.file);
        retype("inner");
        accept();
        row("first.kvt");
        compare(nameField().text, data.file);
        verifySaved("plain/inner/" + data.file);
        verifySize("plain/z.kvt", 34);
    }

    // The list makes its rows anew then.
    function test_folderGrowsMeanwhile_data() {
        return [{ tag: "chosen", chosen: "z.kvt", saved: "z.kvt" }, { tag: "nothing-chosen", saved: "orig.kvt" }];
    }

    function test_folderGrowsMeanwhile(data) {
        openChooser("plain");
        if (data.chosen)
            press(data.chosen);
        write("plain/aaa.kvt", 36);
        row("aaa.kvt");
        compare(nameField().text, data.saved);
        verifySaved("plain/" + data.saved);
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
        keyClick(Qt.Key_S, Qt.ControlModifier);
        tryVerify(() => isOpen());
        verifySaved("plain/" + data.saved);
    }

    function test_noName() {
        openChooser("plain");
        nameField().selectAll();
        keyClick(Qt.Key_Delete);
        verify(!acceptButton().enabled);
        keyClick(Qt.Key_Return);
        enter("inner", "first.kvt");
        compare(nameField().text, "");
        verify(!acceptButton().enabled);
        cancel();
        verifySize("plain/inner/first.kvt", 32);
    }

    // The key that opened the dialog, or entered a folder, may still be held.
    function test_heldReturnSavesNothing() {
        openChooser("plain");
        hold(Qt.Key_Return);
        compare(app.status, "Saved.");
        app.setStatus("", -1);
        find("saveFileButton").forceActiveFocus();
        hold(Qt.Key_Return);
        verify(isOpen());
        compare(app.status, "");
        retype("inner");
        app.setStatus("", -1);
        hold(Qt.Key_Return);
        row("first.kvt");
        verify(isOpen());
        compare(app.status, "");
        cancel();
    }

    // Saved then, the new file would be written over the earlier one.
    function test_goesWhenAnotherFileOpens() {
        openChooser("plain");
        app.openKvt(at("plain/z.kvt"));
        tryVerify(() => !isOpen());
        compare(app.fileName, "z.kvt");
    }

    // Who is used to double clicks opens the dialog by one: it has a row below the pointer by the second click.
    function test_rowBelowThePointer_data() {
        return [{ tag: "saveFileButton", saves: true }, { tag: "openFileButton" }];
    }

    function test_rowBelowThePointer(data) {
        ++number;
        window.width = 1100;
        window.height = 720;
        for (let i = 10; i < 40; ++i)
            write("rows/" + i + ".kvt", i);
        app.openKvt(at("rows/39.kvt"));
        app.setStatus("", -1);
        render();
        const opener = find(data.tag);
        const x = opener.width - 2;
        const list = () => find("chooserList", window.overlayItem);
        const place = () => list().mapFromItem(opener, x, opener.height / 2);
        const rowThere = () => list().itemAt(place().x, place().y + list().contentY);
        let clicks = 0;
        const waitForRow = () => {
            ++clicks;
            tryVerify(rowThere);
        };
        opener.clicked.connect(waitForRow);
        mouseDoubleClickSequence(opener, x, opener.height / 2);
        opener.clicked.disconnect(waitForRow);
        compare(clicks, 1);
        verify(isOpen());
        verifyMarked([]);
        compare(app.status, "");
        // A row takes its own.
        mouseDoubleClickSequence(rowThere());
        if (data.saves)
            confirmOverwriting();
        tryVerify(() => !isOpen());
        compare(app.statusOK, 1);
    }
}
