import QtQuick
import QtTest
import KvtEditor

// What is pressed and typed in our own dialog for opening, and which file comes of it.
ChooserTest {
    name: "OpenChooser"

    // In a folder of that name: b.kvt, m.kvt, z.kvt, and a folder `inner` with a file `first.kvt`.
    function openChooser(folder: string, more: var): void {
        ++number;
        write(folder + "/inner/first.kvt", 32);
        write(folder + "/b.kvt", 33);
        write(folder + "/m.kvt", 34);
        write(folder + "/z.kvt", 35);
        for (const name of more ?? [])
            write(folder + "/" + name, 36);
        app.openKvt(at(folder + "/z.kvt"));
        openAgain();
    }

    function openAgain(): void {
        app.setStatus("", -1);
        click("openFileButton");
        row("m.kvt");
        verifyNoneChosen();
    }

    function verifyNoneChosen(): void {
        verifyMarked([]);
        compare(nameField().text, "");
        verify(!acceptButton().enabled);
    }

    function choose(name: string): void {
        press(name);
        verifyMarked([name]);
        compare(nameField().text, name);
    }

    function verifyOpened(path: string, size: int): void {
        tryVerify(() => !isOpen());
        compare(app.fileName, path.split("/").pop());
        compare(app.hexModel.byteCount, size);
        compare(app.statusOK, 1);
    }

    function test_chosenFile_data() { return folders_data(); }

    function test_chosenFile(data) {
        openChooser(data.folder);
        compare(shownFolder(), at(data.folder));
        choose("b.kvt");
        choose("m.kvt");
        accept();
        verifyOpened(data.folder + "/m.kvt", 34);
    }

    function test_doubleClickedFile() {
        openChooser("plain");
        mouseDoubleClickSequence(row("m.kvt"));
        verifyOpened("plain/m.kvt", 34);
    }

    // Folders come first.
    function test_chosenByKeys_data() {
        return [
            { tag: "file", keys: [Qt.Key_Down, Qt.Key_Down], path: "b.kvt", size: 33 },
            { tag: "back", keys: [Qt.Key_End, Qt.Key_Up], path: "m.kvt", size: 34 },
            { tag: "in-a-folder", keys: [Qt.Key_Home, Qt.Key_Return], within: "first.kvt", path: "inner/first.kvt",
              size: 32 }
        ];
    }

    // The pointer never goes near the dialog.
    function test_chosenByKeys(data) {
        openChooser("plain");
        keyClick(Qt.Key_Return);
        verify(isOpen());
        for (const key of data.keys)
            keyClick(key);
        if (data.within) {
            row(data.within);
            verifyNoneChosen();
            keyClick(Qt.Key_Down);
        }
        verifyMarked([data.path.split("/").pop()]);
        keyClick(Qt.Key_Return);
        verifyOpened("plain/" + data.path, data.size);
    }

    function test_acceptedByTabAndSpace() {
        openChooser("plain");
        keyClick(Qt.Key_End);
        for (let i = 0; i < 8 && !acceptButton().activeFocus; ++i)
            keyClick(Qt.Key_Tab);
        verify(acceptButton().activeFocus);
        keyClick(Qt.Key_Space);
        verifyOpened("plain/z.kvt", 35);
    }

    function test_otherFolders_data() { return folders_data(); }

    function test_otherFolders(data) {
        openChooser(data.folder);
        choose("m.kvt");
        enter("inner", "first.kvt");
        verifyNoneChosen();
        choose("first.kvt");
        keyClick(Qt.Key_Up, Qt.AltModifier);
        row("m.kvt");
        verifyNoneChosen();
        choose("inner");
        accept();
        row("first.kvt");
        verifyNoneChosen();
        compare(shownFolder(), at(data.folder + "/inner"));
        mouseClick(itemsIn(window.overlayItem, item => item.text === data.folder && item.clicked !== undefined)[0]);
        row("inner");
        enter("inner", "first.kvt");
        choose("first.kvt");
        accept();
        verifyOpened(data.folder + "/inner/first.kvt", 32);
    }

    // The letter after the ampersand is not a mnemonic of the folder's button.
    function test_ampersandMakesNoShortcut() {
        openChooser("R&D");
        enter("inner", "first.kvt");
        keyClick(Qt.Key_D, Qt.AltModifier);
        render();
        compare(shownFolder(), at("R&D/inner"));
        cancel();
    }

    // The list makes its rows anew then.
    function test_folderChangesMeanwhile_data() {
        const changes = [
            { tag: "before-the-row", change: () => write("plain/a.kvt", 37), rows: 5 },
            { tag: "after-the-row", change: () => write("plain/zzz.kvt", 37), rows: 5 },
            { tag: "first-one-removed", change: () => fixture.removeFile(number + "/plain/b.kvt"), rows: 3 }
        ];
        return changes.reduce((all, data) => all.concat(["m.kvt", "inner", ""].map(chosen => (
            { tag: data.tag + ": " + chosen, change: data.change, rows: data.rows, chosen: chosen }))), []);
    }

    function test_folderChangesMeanwhile(data) {
        openChooser("plain");
        if (data.chosen)
            choose(data.chosen);
        data.change();
        tryVerify(() => rows().length === data.rows);
        render();
        verifyMarked(data.chosen ? [data.chosen] : []);
        keyClick(Qt.Key_Return);
        if (data.chosen === "inner")
            row("first.kvt");
        else if (data.chosen)
            verifyOpened("plain/m.kvt", 34);
        else
            verifyNoneChosen();
    }

    function test_folderGrowsBesideOddName_data() {
        return ["a b.kvt", "100%.kvt", "c%20d.kvt", "#1?.kvt", "<b>é&.kvt", "~.kvt"].map(name => ({ tag: name }));
    }

    function test_folderGrowsBesideOddName(data) {
        openChooser("plain", [data.tag]);
        choose(data.tag);
        write("plain/!.kvt", 37);
        row("!.kvt");
        verifyMarked([data.tag]);
        accept();
        verifyOpened("plain/" + data.tag, 36);
    }

    function test_chosenFileIsRemoved() {
        openChooser("plain");
        choose("m.kvt");
        fixture.removeFile(number + "/plain/m.kvt");
        tryVerify(() => rows().length === 3);
        verifyNoneChosen();
        // Nor is it taken for chosen when it is there again.
        write("plain/m.kvt", 38);
        row("m.kvt");
        verifyNoneChosen();
        choose("m.kvt");
        accept();
        verifyOpened("plain/m.kvt", 38);
    }

    function test_filterChanges() {
        openChooser("plain", ["a.bin", "n.bin"]);
        const filter = find("chooserFilter", window.overlayItem);
        choose("m.kvt");
        filter.forceActiveFocus();
        keyClick(Qt.Key_Down);
        row("n.bin");
        verifyMarked(["m.kvt"]);
        choose("n.bin");
        filter.forceActiveFocus();
        keyClick(Qt.Key_Up);
        tryVerify(() => rows().length === 4);
        verifyNoneChosen();
        cancel();
    }

    function test_sortedByAColumn() {
        openChooser("plain", ["a.kvt"]);
        const names = () => rows().sort((a, b) => a.y - b.y).map(item => item.name).join();
        compare(names(), "inner,a.kvt,b.kvt,m.kvt,z.kvt");
        press("m.kvt");
        const heading = find("chooserHeadingSize", window.overlayItem);
        mouseClick(heading);
        tryVerify(() => names() === "inner,b.kvt,m.kvt,z.kvt,a.kvt");
        mouseClick(heading);
        tryVerify(() => names() === "inner,a.kvt,z.kvt,m.kvt,b.kvt");
        mouseClick(heading);
        tryVerify(() => names() === "inner,a.kvt,b.kvt,m.kvt,z.kvt");
        verifyMarked(["m.kvt"]);
        cancel();
    }

    // The folder of the open file may be gone: the nearest one above it is shown.
    function test_folderIsGone() {
        openChooser("plain");
        cancel();
        fixture.removeFolder(number + "/plain");
        click("openFileButton");
        tryVerify(() => shownFolder() === at("").replace(/\/$/, ""));
        cancel();
    }

    // A press on what the folder before it held must not count.
    function test_nothingOfTheFolderBefore() {
        openChooser("plain", ["inner/m.kvt"]);
        const row = rows().find(item => item.name === "m.kvt");
        const place = row.mapToItem(null, 20, 10);
        keyClick(Qt.Key_Down);
        keyClick(Qt.Key_Return);
        mouseClick(window.contentItem, place.x, place.y);
        verifyNoneChosen();
        cancel();
    }

    // Neither is a name.
    function test_spaceAndDelete() {
        openChooser("plain");
        keyClick(Qt.Key_Down);
        for (const key of [Qt.Key_Space, Qt.Key_Delete, Qt.Key_Backspace])
            keyClick(key);
        verifyMarked(["inner"]);
        cancel();
    }

    // A button of the folders above goes when it is pressed; the keyboard is in the list then.
    function test_folderButtonByKey() {
        openChooser("plain");
        const above = itemsIn(window.overlayItem, item => item.text === String(number) && item.clicked !== undefined)[0];
        above.forceActiveFocus(Qt.TabFocusReason);
        keyClick(Qt.Key_Space);
        row("plain");
        keyClick(Qt.Key_Down);
        verifyMarked(["plain"]);
        keyClick(Qt.Key_Return);
        row("m.kvt");
        cancel();
    }

    function test_typed_data() {
        return [
            { tag: "name", text: () => "m.kvt", path: "plain/m.kvt", size: 34 },
            { tag: "below", text: () => "inner/first.kvt", path: "plain/inner/first.kvt", size: 32 },
            { tag: "beside", text: () => "../e%20f/x #1.kvt", path: "e%20f/x #1.kvt", size: 36 },
            { tag: "root", text: () => at("e%20f/x #1.kvt"), path: "e%20f/x #1.kvt", size: 36 },
            { tag: "readable-url", text: () => "file://" + at("e%2520f/x #1.kvt").replace("#", "%23"),
              path: "e%20f/x #1.kvt", size: 36 },
            { tag: "url", text: () => "file://" + at("e%2520f/x%20%231.kvt"), path: "e%20f/x #1.kvt", size: 36 }
        ];
    }

    function test_typed(data) {
        openChooser("plain", ["../e%20f/x #1.kvt"]);
        choose("b.kvt");
        retype(data.text());
        verifyMarked([]);
        keyClick(Qt.Key_Return);
        verifyOpened(data.path, data.size);
    }

    // What is typed while the list has the keyboard is a name, too.
    function test_typedIntoTheList() {
        openChooser("plain");
        keyClick(Qt.Key_Down);
        type("m.kvt");
        compare(nameField().text, "m.kvt");
        keyClick(Qt.Key_Return);
        verifyOpened("plain/m.kvt", 34);
    }

    function test_typedFolderIsEntered() {
        openChooser("plain");
        retype(at("plain/inner"));
        keyClick(Qt.Key_Return);
        row("first.kvt");
        verifyNoneChosen();
        retype("..");
        accept();
        row("z.kvt");
        compare(shownFolder(), at("plain"));
        retype("~");
        accept();
        tryVerify(() => shownFolder() === app.expandedPath("~"));
        cancel();
    }

    // As the list goes up, whatever a link leads to.
    function test_aboveALink() {
        openChooser("plain", ["../far/deep/x.kvt"]);
        fixture.link(number + "/far/deep", number + "/plain/link");
        enter("link", "x.kvt");
        retype("../m.kvt");
        accept();
        verifyOpened("plain/m.kvt", 34);
    }

    function test_missingFile() {
        openChooser("plain");
        retype("missing.kvt");
        accept();
        tryVerify(() => !isOpen());
        compare(app.statusOK, 0);
        compare(app.fileName, "z.kvt");
    }

    function test_emptyFolder() {
        openChooser("plain", ["bare/other.bin"]);
        mouseDoubleClickSequence(row("bare"));
        const line = find("chooserEmptyLine", window.overlayItem);
        tryVerify(() => line.visible && line.text === "Nothing to show here.");
        cancel();
    }

    function test_openedAgain_data() { return [{ tag: "closed" }, { tag: "opened", open: true }]; }

    function test_openedAgain(data) {
        openChooser("plain");
        choose("m.kvt");
        if (data.open) {
            accept();
            verifyOpened("plain/m.kvt", 34);
        } else {
            keyClick(Qt.Key_Escape);
            tryVerify(() => !isOpen());
        }
        const size = () => row("m.kvt").values[1];
        write("plain/m.kvt", 5000);
        openAgain();
        compare(size(), Qt.locale().formattedDataSize(5000));
        choose("b.kvt");
        accept();
        verifyOpened("plain/b.kvt", 33);
    }

    // The window takes no key, click or drop meanwhile.
    function test_windowTakesNothing() {
        openChooser("plain");
        keyClick(Qt.Key_O, Qt.ControlModifier);
        keyClick(Qt.Key_2, Qt.ControlModifier);
        mouseClick(window.contentItem, 10, window.height - 10);
        verify(!fixture.drop(window, Qt.point(700, 400), [fixture.urlOf(at("plain/m.kvt"))]));
        verify(isOpen());
        compare(app.tab, "main");
        compare(app.fileName, "z.kvt");
        cancel();
    }

    function loadPatches(): void {
        tryVerify(() => fixture.allArrived());
        fixture.answerNext(JSON.stringify({ patches: [{ id: 7, variant: "A", description: "B" }] }));
        app.setStatus("");
        app.loadPatches("126");
        tryVerify(() => app.status !== "");
        render();
    }

    function test_everyDialog_data() {
        return [
            { tag: "segmentFileDialog", tab: "segments", button: "pickBaseButton", type: "kvt", sends: 0 },
            { tag: "convertInputDialog", tab: "convert", button: "convertBinToKvt", type: "bin" },
            { tag: "toolConvertDialog", tab: "tools", button: "tile_xcal", type: "bin" },
            { tag: "patcherDialog", tab: "patcher", button: "action", type: "bin" }
        ];
    }

    function test_everyDialog(data) {
        ++number;
        write("plain/z.kvt", 32);
        app.openKvt(at("plain/z.kvt"));
        for (const name of ["b", "m", "t"])
            write("plain/" + name + "." + data.type, 33);
        app.tab = data.tab;
        render();
        if (data.tab === "patcher")
            loadPatches();
        tryVerify(() => fixture.allArrived());
        const before = fixture.requestCount();
        mouseClick(find(data.button, data.tab === "patcher" ? find("patcherView") : null));
        verifyMarked([]);
        choose("m." + data.type);
        accept();
        tryVerify(() => !isOpen());
        verifySent(before, data.sends ?? 1);
        if (data.sends === 0)
            compare(app.status, "base set: m.kvt");
        else
            verify(fixture.requestBodies().includes("m." + data.type));
    }

    // The second of two dialogs opens where the first one was left.
    function test_oneAfterTheOther() {
        ++number;
        write("plain/z.kvt", 32);
        write("far/header.bin", 33);
        write("far/export.bin", 34);
        app.openKvt(at("plain/z.kvt"));
        app.tab = "convert";
        render();
        click("convertBinToKvtCm2450");
        retype(at("far/header.bin"));
        keyClick(Qt.Key_Return);
        row("export.bin");
        compare(shownFolder(), at("far"));
        tryVerify(() => fixture.allArrived());
        const before = fixture.requestCount();
        mouseDoubleClickSequence(row("export.bin"));
        tryVerify(() => !isOpen());
        verifySent(before, 1);
    }

    function openForSeveral(): void {
        ++number;
        for (const name of ["a", "b", "c", "d"])
            write("plain/" + name + ".kvt", 33);
        write("plain/inner/first.kvt", 32);
        app.openKvt(at("plain/d.kvt"));
        app.tab = "sorter";
        click("sorterBrowseFilesButton");
        row("d.kvt");
        verifyNoneChosen();
    }

    function verifyTaken(names: var): void {
        accept();
        tryVerify(() => !isOpen());
        compare([...find("sorterView").files].sort().map(path => "/" + path), names.map(name => at("plain/" + name)));
    }

    function test_severalFiles_data() {
        const control = Qt.ControlModifier;
        const shift = Qt.ShiftModifier;
        return [
            { tag: "one", presses: [["a"]], taken: ["a"] },
            { tag: "control", presses: [["a"], ["c", control]], taken: ["a", "c"] },
            { tag: "control-again", presses: [["a"], ["c", control], ["a", control]], taken: ["c"] },
            { tag: "control-first", presses: [["b", control], ["a", control]], taken: ["a", "b"] },
            { tag: "shift", presses: [["b"], ["d", shift]], taken: ["b", "c", "d"] },
            { tag: "shift-back", presses: [["c"], ["a", shift]], taken: ["a", "b", "c"] },
            { tag: "shift-twice", presses: [["c"], ["a", shift], ["d", shift]], taken: ["c", "d"] },
            { tag: "anew", presses: [["a"], ["c", control], ["b"]], taken: ["b"] }
        ];
    }

    function test_severalFiles(data) {
        openForSeveral();
        for (const [name, modifiers] of data.presses)
            press(name + ".kvt", modifiers);
        const taken = data.taken.map(name => name + ".kvt");
        verifyMarked(taken);
        compare(nameField().text, taken.length === 1 ? taken[0] : taken.length + " files");
        write("plain/grown.kvt", 31);
        row("grown.kvt");
        verifyMarked(taken);
        verifyTaken(taken);
    }

    function test_allFiles_data() {
        return [{ tag: "at-once" }, { tag: "after-one", first: "b.kvt" }];
    }

    function test_allFiles(data) {
        openForSeveral();
        if (data.first)
            press(data.first);
        keyClick(Qt.Key_A, Qt.ControlModifier);
        verifyTaken(["a.kvt", "b.kvt", "c.kvt", "d.kvt"]);
    }

    function test_severalByKeys() {
        openForSeveral();
        keyClick(Qt.Key_End);
        keyClick(Qt.Key_Up);
        keyClick(Qt.Key_Up, Qt.ShiftModifier);
        keyClick(Qt.Key_Up, Qt.ShiftModifier);
        verifyTaken(["a.kvt", "b.kvt", "c.kvt"]);
    }

    function test_apartByKeys() {
        openForSeveral();
        keyClick(Qt.Key_Down);
        keyClick(Qt.Key_Down);
        verifyMarked(["a.kvt"]);
        keyClick(Qt.Key_Down, Qt.ControlModifier);
        keyClick(Qt.Key_Down, Qt.ControlModifier);
        verifyMarked(["a.kvt"]);
        keyClick(Qt.Key_Space);
        verifyTaken(["a.kvt", "c.kvt"]);
    }

    // A range goes on from where the keyboard was, although the rows are new.
    function test_rangeInAFolderThatGrows() {
        openForSeveral();
        keyClick(Qt.Key_End);
        keyClick(Qt.Key_Up, Qt.ShiftModifier);
        write("plain/aa.kvt", 31);
        row("aa.kvt");
        keyClick(Qt.Key_Up, Qt.ShiftModifier);
        verifyTaken(["b.kvt", "c.kvt", "d.kvt"]);
    }

    // Shift marks from no row of another folder.
    function test_anchorStays() {
        openForSeveral();
        write("plain/inner/b.kvt", 31);
        write("plain/inner/a.kvt", 31);
        press("b.kvt");
        enter("inner", "first.kvt");
        press("first.kvt", Qt.ShiftModifier);
        verifyTaken(["inner/first.kvt"]);
    }

    // A folder is entered, never taken.
    function test_folderAmongFiles() {
        openForSeveral();
        press("a.kvt");
        press("inner", Qt.ControlModifier);
        verifyMarked(["inner"]);
        press("b.kvt", Qt.ControlModifier);
        verifyMarked(["b.kvt"]);
        press("inner", Qt.ShiftModifier);
        verifyTaken(["a.kvt", "b.kvt"]);
    }

    // The list may be drawn by a press, as on a touch screen.
    function test_draggedListMarksNothing() {
        openForSeveral();
        press("a.kvt");
        const third = row("c.kvt");
        mousePress(third, 50, 20);
        for (let y = 20; y > -60; y -= 10)
            mouseMove(third, 50, y);
        mouseRelease(third, 50, -60);
        verifyTaken(["a.kvt"]);
    }

    function test_marksEnd_data() {
        return [
            { tag: "arrow", leave: () => keyClick(Qt.Key_Up), then: "a.kvt" },
            { tag: "folder", leave: () => {
                enter("inner", "first.kvt");
                choose("first.kvt");
            }, then: "inner/first.kvt" },
            { tag: "typed", leave: () => retype("d.kvt"), then: "d.kvt" }
        ];
    }

    function test_marksEnd(data) {
        openForSeveral();
        press("c.kvt");
        press("b.kvt", Qt.ShiftModifier);
        data.leave();
        verifyTaken([data.then]);
    }
}
