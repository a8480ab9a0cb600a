import QtQuick
import QtTest
import KvtEditor

// What is pressed in Qt's own dialog for opening files, and which file comes of it.
DialogTest {
    name: "OpenDialog"

    // In a folder of that name: b.kvt, m.kvt, z.kvt, and a folder `inner` with a file `first.kvt`.
    function openDialog(folder: string, more: var): var {
        ++number;
        write(folder + "/inner/first.kvt", 32);
        write(folder + "/b.kvt", 33);
        write(folder + "/m.kvt", 34);
        write(folder + "/z.kvt", 35);
        for (const name of more ?? [])
            write(folder + "/" + name, 36);
        app.openKvt(at(folder + "/z.kvt"));
        return openAgain();
    }

    function openAgain(): var {
        app.setStatus("", -1);
        click("openFileButton");
        const dialog = find("openDialog");
        tryVerify(() => dialog.visible);
        row("m.kvt");
        verifyNoneChosen();
        return dialog;
    }

    function verifyNoneChosen(): void {
        verifyMarked([]);
        tryVerify(() => !button("Open").enabled);
        mouseClick(button("Open"));
        verify(button("Open").visible);
    }

    function choose(name: string): void {
        mouseClick(row(name));
        verifyMarked([name]);
    }

    function selectFilter(index: int): void {
        const filters = itemsIn(window.overlayItem, item => item.displayText !== undefined)[0];
        const key = index > filters.currentIndex ? Qt.Key_Down : Qt.Key_Up;
        filters.forceActiveFocus();
        keyClick(key);
        tryCompare(filters, "currentIndex", index);
    }

    function verifyClosedWith(dialog: var, path: string, size: int): void {
        tryVerify(() => !dialog.visible);
        compare(dialog.selectedFile, fixture.urlOf(at(path)));
        compare(app.fileName, path.split("/").pop());
        compare(app.hexModel.byteCount, size);
        compare(app.statusOK, 1);
    }

    function verifyOpened(dialog: var, path: string, size: int): void {
        tryVerify(() => button("Open").enabled);
        mouseClick(button("Open"));
        verifyClosedWith(dialog, path, size);
    }

    function test_chosenFile_data() { return folders_data(); }

    function test_chosenFile(data) {
        const dialog = openDialog(data.folder);
        choose("b.kvt");
        choose("m.kvt");
        verifyOpened(dialog, data.folder + "/m.kvt", 34);
    }

    function test_doubleClickedFile() {
        const dialog = openDialog("plain");
        mouseDoubleClickSequence(row("m.kvt"));
        verifyClosedWith(dialog, "plain/m.kvt", 34);
    }

    function test_chosenByKeys_data() {
        return [
            { tag: "file", way: ["b.kvt"], size: 33 },
            { tag: "back-to-folder", way: ["m.kvt", "inner"] },
            { tag: "over-folder", way: ["inner", "m.kvt"], size: 34 }
        ];
    }

    // The pointer never goes near the dialog.
    function test_chosenByKeys(data) {
        const dialog = openDialog("plain");
        keyClick(Qt.Key_Return);
        verify(dialog.visible);
        for (const name of data.way)
            moveTo(name);
        keyClick(Qt.Key_Return);
        if (data.size) {
            verifyClosedWith(dialog, "plain/" + data.way.pop(), data.size);
            return;
        }
        row("first.kvt");
        verifyNoneChosen();
        keyClick(Qt.Key_Down);
        verifyMarked(["first.kvt"]);
        for (let i = 0; i < 3 && !button("Open").activeFocus; ++i)
            keyClick(Qt.Key_Tab);
        verify(button("Open").activeFocus);
        keyClick(Qt.Key_Space);
        verifyClosedWith(dialog, "plain/inner/first.kvt", 32);
    }

    function test_otherFolders_data() { return folders_data(); }

    function test_otherFolders(data) {
        const dialog = openDialog(data.folder);
        choose("m.kvt");
        mouseDoubleClickSequence(row("inner"));
        row("first.kvt");
        verifyNoneChosen();
        choose("first.kvt");
        keyClick(Qt.Key_Up, Qt.AltModifier);
        row("m.kvt");
        verifyNoneChosen();
        choose("inner");
        mouseClick(button("Open"));
        row("first.kvt");
        verifyNoneChosen();
        choose("first.kvt");
        verifyOpened(dialog, data.folder + "/inner/first.kvt", 32);
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
        const dialog = openDialog("plain");
        if (data.chosen)
            choose(data.chosen);
        data.change();
        tryVerify(() => rows().length === data.rows);
        render();
        if (!data.chosen) {
            verifyNoneChosen();
            choose("m.kvt");
        }
        if (data.chosen === "inner") {
            verifyMarked(["inner"]);
            mouseClick(button("Open"));
            row("first.kvt");
            verifyNoneChosen();
            choose("first.kvt");
            verifyOpened(dialog, "plain/inner/first.kvt", 32);
        } else {
            verifyMarked(["m.kvt"]);
            verifyOpened(dialog, "plain/m.kvt", 34);
        }
    }

    function test_folderGrowsBesideOddName_data() {
        return ["a b.kvt", "100%.kvt", "c%20d.kvt", "#1?.kvt", "<b>é&.kvt"].map(name => ({ tag: name }));
    }

    function test_folderGrowsBesideOddName(data) {
        const dialog = openDialog("plain", [data.tag]);
        choose(data.tag);
        write("plain/!.kvt", 37);
        row("!.kvt");
        verifyMarked([data.tag]);
        verifyOpened(dialog, "plain/" + data.tag, 36);
    }

    function test_chosenFileIsRemoved() {
        const dialog = openDialog("plain");
        choose("m.kvt");
        fixture.removeFile(number + "/plain/m.kvt");
        tryVerify(() => rows().length === 3);
        verifyNoneChosen();
        // Nor is it taken for chosen when it is there again.
        write("plain/m.kvt", 38);
        row("m.kvt");
        verifyNoneChosen();
        choose("m.kvt");
        verifyOpened(dialog, "plain/m.kvt", 38);
    }

    function test_listsAnyCase() {
        openDialog("case", ["TRUCK.KVT", "truck2.Kvt", "other.bin"]);
        row("TRUCK.KVT");
        row("truck2.Kvt");
        tryVerify(() => rows().every(item => item.fileName !== "other.bin"));
    }

    function test_filterChanges() {
        const dialog = openDialog("plain", ["a.bin", "n.bin"]);
        choose("m.kvt");
        selectFilter(1);
        row("n.bin");
        verifyMarked(["m.kvt"]);
        choose("n.bin");
        selectFilter(0);
        tryVerify(() => rows().length === 4);
        verifyNoneChosen();
        choose("m.kvt");
        verifyOpened(dialog, "plain/m.kvt", 34);
    }

    function test_path_data() { return folders_data(); }

    function test_path(data) {
        const dialog = openDialog("plain", ["../" + data.folder + "/x.kvt"]);
        choose("m.kvt");
        givePath(at(data.folder + "/x.kvt"));
        verifyClosedWith(dialog, data.folder + "/x.kvt", 36);
    }

    function test_pathOfAFolder() {
        const dialog = openDialog("plain");
        choose("m.kvt");
        compare(showPath().text, at("plain"));
        keyClick(Qt.Key_Escape);
        verifyMarked(["m.kvt"]);
        givePath(at("plain/inner"));
        row("first.kvt");
        verifyNoneChosen();
        choose("first.kvt");
        verifyOpened(dialog, "plain/inner/first.kvt", 32);
    }

    function test_pathIsLeft_data() { return [{ tag: "empty", path: "" }, { tag: "started", path: "/" }]; }

    function test_pathIsLeft(data) {
        const dialog = openDialog("plain");
        choose("m.kvt");
        const field = showPath();
        field.selectAll();
        keyClick(Qt.Key_Delete);
        type(data.path);
        write("plain/a.kvt", 37);
        row("a.kvt");
        verifyMarked(["m.kvt"]);
        compare(field.text, data.path);
        verify(!button("Open").enabled);
        if (data.path === "")
            keyClick(Qt.Key_Return);
        verify(dialog.visible);
        keyClick(Qt.Key_Escape);
        tryVerify(() => !field.visible);
        verifyOpened(dialog, "plain/m.kvt", 34);
    }

    function test_openedAgain_data() { return [{ tag: "closed" }, { tag: "opened", open: true }]; }

    function test_openedAgain(data) {
        const dialog = openDialog("plain");
        choose("m.kvt");
        if (data.open) {
            verifyOpened(dialog, "plain/m.kvt", 34);
        } else {
            mouseClick(button("Cancel"));
            tryVerify(() => !dialog.visible);
        }
        write("plain/a.kvt", 37);
        openAgain();
        choose("b.kvt");
        verifyOpened(dialog, "plain/b.kvt", 33);
    }

    function test_sizesAreOfNow_data() { return folders_data(); }

    function test_sizesAreOfNow(data) {
        const dialog = openDialog(data.folder);
        const size = () => fixture.find(row("m.kvt"), "fileSize").text;
        compare(size(), Qt.locale().formattedDataSize(34));
        mouseClick(button("Cancel"));
        tryVerify(() => !dialog.visible);
        write(data.folder + "/m.kvt", 5000);
        openAgain();
        compare(size(), Qt.locale().formattedDataSize(5000));
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
            { tag: "sorterFilesDialog", tab: "sorter", button: "sorterBrowseFilesButton", type: "kvt" },
            { tag: "segmentFileDialog", tab: "segments", button: "pickBaseButton", type: "kvt" },
            { tag: "convertInputDialog", tab: "convert", button: "convertBinToKvt", type: "bin" },
            { tag: "convertHeaderDialog", tab: "convert", button: "convertBinToKvtCm2450", type: "bin" },
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
        mouseClick(find(data.button, data.tab === "patcher" ? find("patcherView") : null));
        const dialog = find(data.tag);
        tryVerify(() => dialog.visible);
        verifyNoneChosen();
        choose("m." + data.type);
        write("plain/a." + data.type, 34);
        row("a." + data.type);
        verifyMarked(["m." + data.type]);
        mouseClick(button("Open"));
        tryVerify(() => !dialog.visible);
        compare(dialog.selectedFile, fixture.urlOf(at("plain/m." + data.type)));
    }

    function openForSeveral(): var {
        ++number;
        for (const name of ["a", "b", "c", "d"])
            write("plain/" + name + ".kvt", 33);
        write("plain/inner/first.kvt", 32);
        app.openKvt(at("plain/d.kvt"));
        app.tab = "sorter";
        click("sorterBrowseFilesButton");
        row("d.kvt");
        verifyNoneChosen();
        return find("sorterFilesDialog");
    }

    function press(name: string, modifiers: int): void {
        mouseClick(row(name), undefined, undefined, Qt.LeftButton, modifiers);
    }

    // As they are seen.
    function markedFiles(): string {
        return rows().filter(item => itemsIn(item, mark => mark.objectName === "mark" && mark.visible).length > 0).map(
            item => item.fileName).sort().join();
    }

    function takenFiles(dialog: var): var {
        tryVerify(() => button("Open").enabled);
        mouseClick(button("Open"));
        tryVerify(() => !dialog.visible);
        return [...find("sorterView").files].sort().map(path => "/" + path);
    }

    function test_severalFiles_data() {
        return [
            { tag: "one", presses: [["a"]], taken: ["a"] },
            { tag: "control", presses: [["a"], ["c", Qt.ControlModifier]], taken: ["a", "c"] },
            { tag: "control-again", presses: [["a"], ["c", Qt.ControlModifier], ["a", Qt.ControlModifier]],
              taken: ["c"] },
            { tag: "control-first", presses: [["b", Qt.ControlModifier], ["a", Qt.ControlModifier]], taken: ["a", "b"] },
            { tag: "shift", presses: [["b"], ["d", Qt.ShiftModifier]], taken: ["b", "c", "d"] },
            { tag: "shift-back", presses: [["c"], ["a", Qt.ShiftModifier]], taken: ["a", "b", "c"] },
            { tag: "anew", presses: [["a"], ["c", Qt.ControlModifier], ["b"]], taken: ["b"] }
        ];
    }

    function test_severalFiles(data) {
        const dialog = openForSeveral();
        for (const [name, modifiers] of data.presses)
            press(name + ".kvt", modifiers ?? Qt.NoModifier);
        compare(markedFiles(), data.taken.map(name => name + ".kvt").join());
        compare(takenFiles(dialog), data.taken.map(name => at("plain/" + name + ".kvt")));
    }

    function test_allFiles_data() {
        return [{ tag: "at-once" }, { tag: "after-one", first: "b.kvt" }];
    }

    function test_allFiles(data) {
        const dialog = openForSeveral();
        if (data.first)
            press(data.first);
        keyClick(Qt.Key_A, Qt.ControlModifier);
        compare(markedFiles(), "a.kvt,b.kvt,c.kvt,d.kvt");
        compare(takenFiles(dialog).length, 4);
    }

    // A folder is entered, never taken.
    function test_folderAmongFiles() {
        const dialog = openForSeveral();
        press("a.kvt");
        press("inner", Qt.ControlModifier);
        press("b.kvt", Qt.ControlModifier);
        compare(markedFiles(), "b.kvt");
        compare(takenFiles(dialog), [at("plain/b.kvt")]);
    }

    // The list may be drawn by a press, as on a touch screen.
    function test_draggedListMarksNothing() {
        const dialog = openForSeveral();
        press("a.kvt");
        const third = row("c.kvt");
        mousePress(third, 50, 20);
        for (let y = 20; y > -60; y -= 10)
            mouseMove(third, 50, y);
        mouseRelease(third, 50, -60);
        compare(takenFiles(dialog), [at("plain/a.kvt")]);
    }

    // What another folder or the arrow keys choose is not taken along with what was marked.
    function test_marksEnd_data() {
        return [
            { tag: "arrow", leave: () => keyClick(Qt.Key_Up), then: "a.kvt" },
            { tag: "folder", leave: () => {
                mouseDoubleClickSequence(row("inner"));
                choose("first.kvt");
            }, then: "inner/first.kvt" }
        ];
    }

    function test_marksEnd(data) {
        const dialog = openForSeveral();
        press("c.kvt");
        press("b.kvt", Qt.ShiftModifier);
        data.leave();
        compare(takenFiles(dialog), [at("plain/" + data.then)]);
    }

    function test_shiftAfterAnArrow() {
        const dialog = openForSeveral();
        press("d.kvt");
        keyClick(Qt.Key_Up);
        press("a.kvt", Qt.ShiftModifier);
        tryVerify(() => markedFiles().includes("a.kvt"));
        verify(!takenFiles(dialog).includes(at("plain/d.kvt")));
    }

    function test_folderDialogMarksNothing() {
        const files = openForSeveral();
        press("a.kvt");
        compare(takenFiles(files).length, 1);
        click("sorterBrowseFolderButton");
        const dialog = find("sorterFolderDialog");
        tryVerify(() => dialog.visible);
        press("inner");
        compare(markedFiles(), "");
        dialog.close();
    }
}
