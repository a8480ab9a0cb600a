import QtQuick
import QtTest
import KvtEditor

// What is pressed and typed in Qt's own dialog for folders, and which folder comes of it.
DialogTest {
    name: "FolderDialog"

    // A tab with a folder dialog, and where the folder shows that was taken.
    readonly property var search: ({ tab: "search", browse: "searchBrowseButton",
        dialog: "searchFolderDialog", field: "searchFolderField" })
    readonly property var sorter: ({ tab: "sorter", browse: "sorterBrowseFolderButton",
        dialog: "sorterFolderDialog", field: "sorterFolderField" })

    property var place: search

    // In a folder of that name: folders `bare`, `inner` with a folder `deep`, and `other`.
    function openFolderDialog(folder: string, asker: var, more: var): var {
        ++number;
        place = asker ?? search;
        if (more)
            write(more + "/first/x.kvt", 32);
        write(folder + "/bare/x.kvt", 32);
        write(folder + "/inner/deep/x.kvt", 32);
        write(folder + "/other/x.kvt", 32);
        write(folder + "/orig.kvt", 32);
        app.openKvt(at(folder + "/orig.kvt"));
        app.tab = place.tab;
        render();
        const dialog = openAgain();
        compare(dialog.currentFolder, fixture.urlOf(at(folder)));
        compare(itemsIn(window.overlayItem, item => item instanceof Text && item.text === dialog.title).length, 1);
        row("inner");
        verifyNoneChosen(dialog);
        return dialog;
    }

    function openAgain(): var {
        const dialog = find(place.dialog);
        click(place.browse);
        tryVerify(() => dialog.visible);
        return dialog;
    }

    function verifyNoneChosen(dialog: var): void {
        verifyMarked([]);
        tryVerify(() => String(dialog.selectedFolder) === String(dialog.currentFolder));
    }

    function enter(dialog: var, folder: string, within: string): void {
        mouseDoubleClickSequence(row(folder));
        row(within);
        verifyNoneChosen(dialog);
    }

    function verifyClosedWith(dialog: var, folder: string): void {
        tryVerify(() => !dialog.visible);
        compare("/" + find(place.field).text, at(folder));
        tryCompare(app, "searchBusy", false);
    }

    function verifyTaken(dialog: var, folder: string): void {
        tryVerify(() => button("Open").enabled);
        mouseClick(button("Open"));
        verifyClosedWith(dialog, folder);
    }

    function verifyTakenByKeys(dialog: var, folder: string): void {
        for (let i = 0; i < 3 && !button("Open").activeFocus; ++i)
            keyClick(Qt.Key_Tab);
        verify(button("Open").activeFocus);
        keyClick(Qt.Key_Space);
        verifyClosedWith(dialog, folder);
    }

    function test_shownAtFirst_data(): var {
        return folders_data().reduce((all, data) => all.concat(
            { tag: "search: " + data.folder, folder: data.folder, asker: search },
            { tag: "sorter: " + data.folder, folder: data.folder, asker: sorter }), []);
    }

    function test_shownAtFirst(data) {
        verifyTaken(openFolderDialog(data.folder, data.asker), data.folder);
    }

    function test_enteredByDoubleClick_data() { return folders_data(); }

    function test_enteredByDoubleClick(data) {
        const dialog = openFolderDialog(data.folder, sorter);
        enter(dialog, "inner", "deep");
        verifyTaken(dialog, data.folder + "/inner");
    }

    function test_enteredFolderOfOddName_data() { return folders_data(); }

    function test_enteredFolderOfOddName(data) {
        const dialog = openFolderDialog("odd", search, "odd/" + data.folder);
        mouseDoubleClickSequence(row(data.folder));
        tryCompare(dialog, "currentFolder", fixture.urlOf(at("odd/" + data.folder)));
        row("first");
        verifyNoneChosen(dialog);
        verifyTaken(dialog, "odd/" + data.folder);
    }

    // The letter after the ampersand is not a mnemonic of the folder's button.
    function test_ampersandMakesNoShortcut() {
        const dialog = openFolderDialog("R&D", search);
        enter(dialog, "inner", "deep");
        keyClick(Qt.Key_D, Qt.AltModifier);
        render();
        compare(dialog.currentFolder, fixture.urlOf(at("R&D/inner")));
    }

    function test_enteredWithoutSubfolders_data() {
        return [{ tag: "search", asker: search }, { tag: "sorter", asker: sorter }];
    }

    function test_enteredWithoutSubfolders(data) {
        const dialog = openFolderDialog("plain", data.asker);
        mouseDoubleClickSequence(row("bare"));
        tryVerify(() => rows().length === 0);
        verifyTaken(dialog, "plain/bare");
    }

    function test_parentFolder_data() { return folders_data(); }

    function test_parentFolder(data) {
        const dialog = openFolderDialog(data.folder);
        enter(dialog, "inner", "deep");
        keyClick(Qt.Key_Up, Qt.AltModifier);
        row("other");
        verifyNoneChosen(dialog);
        verifyTaken(dialog, data.folder);
    }

    function test_parentFolderByButton_data() {
        return [
            { tag: "up", isIt: item => item.objectName === "upButton" },
            { tag: "breadcrumb", isIt: item => item.folderName === "é f" }
        ];
    }

    function test_parentFolderByButton(data) {
        const dialog = openFolderDialog("é f", sorter);
        enter(dialog, "inner", "deep");
        mouseClick(itemsIn(window.overlayItem, item => item.clicked !== undefined && data.isIt(item))[0]);
        row("other");
        verifyNoneChosen(dialog);
        verifyTaken(dialog, "é f");
    }

    function test_typedPath_data() {
        return [
            { tag: "inner", path: "plain/inner", within: "deep" },
            { tag: "bare", path: "plain/bare" },
            { tag: "same", path: "plain", within: "other" }
        ];
    }

    function test_typedPath(data) {
        const dialog = openFolderDialog("plain");
        const pathField = showPath();
        verify(!button("Open").enabled);
        verify(button("Open").opacity < 1);
        pathField.selectAll();
        type(at(data.path));
        keyClick(Qt.Key_Return);
        tryCompare(dialog, "currentFolder", fixture.urlOf(at(data.path)));
        if (data.within)
            row(data.within);
        tryVerify(() => !pathField.visible);
        verifyNoneChosen(dialog);
        verifyTaken(dialog, data.path);
    }

    function test_leftPath() {
        const dialog = openFolderDialog("plain");
        keyClick(Qt.Key_L, Qt.ControlModifier);
        verify(!button("Open").enabled);
        verify(button("Open").opacity < 1);
        keyClick(Qt.Key_Escape);
        tryVerify(() => button("Open").enabled);
        verifyTaken(dialog, "plain");
    }

    function test_chosenRow_data() {
        return folders_data().reduce((all, data) => all.concat(
            ["bare", "inner", "other"].map(name => (
                { tag: data.folder + "/" + name, folder: data.folder, name: name }))), []);
    }

    function test_chosenRow(data) {
        const dialog = openFolderDialog(data.folder);
        mouseClick(row(data.name));
        verifyMarked([data.name]);
        verifyTaken(dialog, data.folder + "/" + data.name);
    }

    function test_chosenRowOfOddName_data() { return folders_data(); }

    function test_chosenRowOfOddName(data) {
        const dialog = openFolderDialog("odd", sorter, "odd/" + data.folder);
        mouseClick(row(data.folder));
        verifyMarked([data.folder]);
        verifyTaken(dialog, "odd/" + data.folder);
    }

    function test_secondThought() {
        const dialog = openFolderDialog("plain");
        mouseClick(row("bare"));
        mouseClick(row("other"));
        verifyMarked(["other"]);
        verifyTaken(dialog, "plain/other");
    }

    function test_clickBesideTheRows() {
        const dialog = openFolderDialog("plain");
        const list = find("folderDialogListView", window.overlayItem);
        mouseClick(list, list.width / 2, list.height - 5);
        verifyNoneChosen(dialog);
        verifyTaken(dialog, "plain");
    }

    function test_chosenByKeys_data() {
        return [
            { tag: "first", keys: [Qt.Key_Down], taken: "bare" },
            { tag: "second", keys: [Qt.Key_Down, Qt.Key_Down], taken: "inner" },
            { tag: "back", keys: [Qt.Key_Down, Qt.Key_Down, Qt.Key_Up], taken: "bare" }
        ];
    }

    function test_chosenByKeys(data) {
        const dialog = openFolderDialog("plain");
        for (const key of data.keys)
            keyClick(key);
        verifyMarked([data.taken]);
        verifyTakenByKeys(dialog, "plain/" + data.taken);
    }

    function test_enteredByKeys() {
        const dialog = openFolderDialog("plain", sorter);
        // Nothing is chosen yet that it could enter.
        keyClick(Qt.Key_Return);
        compare(dialog.currentFolder, fixture.urlOf(at("plain")));
        keyClick(Qt.Key_Down);
        keyClick(Qt.Key_Down);
        verifyMarked(["inner"]);
        keyClick(Qt.Key_Return);
        row("deep");
        verifyNoneChosen(dialog);
        verifyTakenByKeys(dialog, "plain/inner");
    }

    function test_noKeyButTab() {
        verifyTakenByKeys(openFolderDialog("plain"), "plain");
    }

    function test_keyboardComesBack_data() {
        const fields = [
            { tag: "search", asker: search, field: "searchNameField" },
            { tag: "sorter", asker: sorter, field: "sorterOrderField" }
        ];
        return fields.reduce((all, data) => all.concat(["accepted", "rejected"].map(end => (
            { tag: data.tag + ", " + end, asker: data.asker, field: data.field, end: end }))), []);
    }

    // However a dialog is closed: a click into a field is enough to type there.
    function test_keyboardComesBack(data) {
        place = data.asker;
        app.tab = place.tab;
        fixture.writeFile("any/a.kvt");
        const dialog = find(place.dialog);
        for (let i = 0; i < 2; ++i) {
            dialog.open();
            tryVerify(() => dialog.visible);
            dialog.selectedFolder = fixture.urlOf(fixture.tempPath("any"));
            data.end === "accepted" ? dialog.accept() : dialog.reject();
            tryVerify(() => !dialog.visible);
            render();
            const field = input(data.field);
            field.text = "";
            mouseClick(field);
            verify(window.active);
            verify(field.activeFocus);
            type("2014");
            compare(field.text, "2014");
            window.contentItem.forceActiveFocus();
        }
        tryCompare(app, "searchBusy", false);
    }

    // What was chosen is forgotten where another folder is entered.
    function test_anotherFolderThanChosen() {
        const dialog = openFolderDialog("plain");
        mouseClick(row("other"));
        verifyMarked(["other"]);
        enter(dialog, "inner", "deep");
        mouseClick(row("deep"));
        verifyMarked(["deep"]);
        keyClick(Qt.Key_Up, Qt.AltModifier);
        row("other");
        verifyNoneChosen(dialog);
        verifyTaken(dialog, "plain");
    }

    // The list makes its rows anew then.
    function test_folderGrowsMeanwhile_data() {
        return [
            { tag: "before-the-row", folder: "aaa", chosen: ["inner"] },
            { tag: "after-the-row", folder: "zzz", chosen: ["inner"] },
            { tag: "no-row", folder: "aaa", chosen: [] }
        ];
    }

    function test_folderGrowsMeanwhile(data) {
        const dialog = openFolderDialog("plain");
        for (const name of data.chosen)
            mouseClick(row(name));
        verifyMarked(data.chosen);
        write("plain/" + data.folder + "/x.kvt", 32);
        row(data.folder);
        verifyMarked(data.chosen);
        verifyTaken(dialog, ["plain"].concat(data.chosen).join("/"));
    }

    function test_chosenFolderIsRemoved() {
        const dialog = openFolderDialog("plain");
        mouseClick(row("inner"));
        verifyMarked(["inner"]);
        fixture.removeFolder(number + "/plain/inner");
        tryVerify(() => rows().length === 2);
        verifyNoneChosen(dialog);
        verifyTaken(dialog, "plain");
    }

    function test_openedAgain_data() { return [{ tag: "closed" }, { tag: "taken", take: true }]; }

    function test_openedAgain(data) {
        const dialog = openFolderDialog("plain", sorter);
        mouseClick(row("other"));
        verifyMarked(["other"]);
        if (data.take) {
            verifyTaken(dialog, "plain/other");
        } else {
            mouseClick(button("Cancel"));
            tryVerify(() => !dialog.visible);
        }
        openAgain();
        row("inner");
        verifyNoneChosen(dialog);
        keyClick(Qt.Key_Return);
        compare(dialog.currentFolder, fixture.urlOf(at("plain")));
        verifyTaken(dialog, "plain");
        openAgain();
        enter(dialog, "inner", "deep");
        verifyTaken(dialog, "plain/inner");
    }
}
