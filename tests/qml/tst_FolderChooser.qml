import QtQuick
import QtTest
import KvtEditor

// What is pressed and typed in our own dialog for folders, and which folder comes of it.
ChooserTest {
    name: "FolderChooser"

    // A tab with a folder dialog, and where the folder shows that was taken.
    readonly property var search: ({ tab: "search", browse: "searchBrowseButton", field: "searchFolderField" })
    readonly property var sorter: ({ tab: "sorter", browse: "sorterBrowseFolderButton", field: "sorterFolderField" })

    property var place: search

    // In a folder of that name: folders `bare`, `inner` with a folder `deep`, and `other`.
    function openChooser(folder: string, asker: var, more: var): void {
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
        click(place.browse);
        row("inner");
        verifyMarked([]);
        compare(shownFolder(), at(folder));
    }

    function verifyTaken(folder: string): void {
        accept();
        verifyClosedWith(folder);
    }

    function verifyClosedWith(folder: string): void {
        tryVerify(() => !isOpen());
        compare("/" + find(place.field).text, at(folder));
        tryCompare(app, "searchBusy", false);
    }

    function test_shownAtFirst_data() {
        return folders_data().reduce((all, data) => all.concat(
            { tag: "search: " + data.folder, folder: data.folder, asker: search },
            { tag: "sorter: " + data.folder, folder: data.folder, asker: sorter }), []);
    }

    function test_shownAtFirst(data) {
        openChooser(data.folder, data.asker);
        compare(rows().map(item => item.name).sort().join(), "bare,inner,other");
        verifyTaken(data.folder);
    }

    function test_entered_data() { return folders_data(); }

    function test_entered(data) {
        openChooser(data.folder, sorter);
        enter("inner", "deep");
        verifyTaken(data.folder + "/inner");
    }

    function test_enteredFolderOfOddName_data() { return folders_data(); }

    function test_enteredFolderOfOddName(data) {
        openChooser("odd", search, "odd/" + data.folder);
        enter(data.folder, "first");
        verifyTaken("odd/" + data.folder);
    }

    function test_enteredWithoutSubfolders() {
        openChooser("plain");
        mouseDoubleClickSequence(row("bare"));
        tryVerify(() => rows().length === 0);
        verifyTaken("plain/bare");
    }

    function test_markedRow_data() { return folders_data(); }

    function test_markedRow(data) {
        openChooser("odd", sorter, "odd/" + data.folder);
        press("bare");
        press(data.folder);
        verifyMarked([data.folder]);
        verifyTaken("odd/" + data.folder);
    }

    function test_parentFolder() {
        openChooser("plain");
        press("other");
        enter("inner", "deep");
        press("deep");
        keyClick(Qt.Key_Up, Qt.AltModifier);
        row("other");
        verifyMarked([]);
        verifyTaken("plain");
    }

    function test_byKeys() {
        openChooser("plain", sorter);
        // Nothing is marked yet that it could enter.
        keyClick(Qt.Key_Return);
        compare(shownFolder(), at("plain"));
        keyClick(Qt.Key_Down);
        keyClick(Qt.Key_Down);
        verifyMarked(["inner"]);
        keyClick(Qt.Key_Return);
        row("deep");
        for (let i = 0; i < 8 && !acceptButton().activeFocus; ++i)
            keyClick(Qt.Key_Tab);
        keyClick(Qt.Key_Space);
        verifyClosedWith("plain/inner");
    }

    function test_typedPath_data() {
        return [
            { tag: "root", text: () => at("plain/inner"), within: "deep", taken: "plain/inner" },
            { tag: "name", text: () => "inner", within: "deep", taken: "plain/inner" },
            { tag: "beside", text: () => "inner/../other/", taken: "plain/other" },
            { tag: "same", text: () => ".", within: "other", taken: "plain" }
        ];
    }

    // A path leads there; what is shown then is what is taken.
    function test_typedPath(data) {
        openChooser("plain");
        retype(data.text());
        keyClick(Qt.Key_Return);
        tryVerify(() => shownFolder() === at(data.taken));
        if (data.within)
            row(data.within);
        compare(nameField().text, "");
        verifyTaken(data.taken);
    }

    // It is not there, or is a file.
    function test_noFolder_data() { return [{ tag: "missing" }, { tag: "orig.kvt" }]; }

    function test_noFolder(data) {
        openChooser("plain");
        retype(data.tag);
        keyClick(Qt.Key_Return);
        verify(isOpen());
        compare(shownFolder(), at("plain"));
        compare(nameField().text, data.tag);
        const note = find("chooserFolderMissing", window.overlayItem);
        verify(note.text !== "");
        type("x");
        compare(note.text, "");
        cancel();
    }

    function test_markedFolderIsRemoved() {
        openChooser("plain");
        press("inner");
        fixture.removeFolder(number + "/plain/inner");
        tryVerify(() => rows().length === 2);
        verifyMarked([]);
        verifyTaken("plain");
    }

    function test_openedAgain() {
        openChooser("plain", sorter);
        enter("inner", "deep");
        verifyTaken("plain/inner");
        click(place.browse);
        row("deep");
        press("deep");
        cancel();
        compare("/" + find(place.field).text, at("plain/inner"));
        click(place.browse);
        row("deep");
        verifyMarked([]);
        verifyTaken("plain/inner");
    }
}
