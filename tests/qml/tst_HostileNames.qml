import QtQuick
import QtTest
import KvtEditor

// Files and folders with odd names: whatever way they come, it is the same file, and its name is shown
// letter by letter.
ViewTest {
    id: root

    name: "HostileNames"

    ownFileDialogs: true

    property int size: 32

    function names_data(): var {
        const port = fixture.address("").match(/\d+(?=\/$)/)[0];
        return [
            { tag: "blanks", name: " two  blanks " },
            { tag: "hash", name: "number #1" },
            { tag: "percent", name: "100%" },
            { tag: "percent-encoded-blank", name: "a%20b" },
            { tag: "question-mark", name: "what?" },
            { tag: "brackets", name: "[set] {2}" },
            { tag: "accents", name: "gr\u00F6\u00DFe \u00E9" },
            { tag: "newline", name: "two\nlines" },
            { tag: "many-newlines", name: "x\n".repeat(100) + "y" },
            { tag: "ampersand", name: "R&D &amp;" },
            { tag: "tag", name: "<b>bold" },
            { tag: "picture", name: "<img src='x'>" },
            { tag: "picture-with-entities", name: "<img src='http:&#47;&#47;127.0.0.1:" + port + "&#47;picture.png'>" },
            { tag: "picture-with-backslashes", name: "<img src='http:\\\\127.0.0.1:" + port + "\\picture.png'>" },
            { tag: "quotes", name: "a\"b'c" },
            { tag: "override", name: "a\u202Eb" },
            { tag: "place-holder", name: "%1 %2" },
            { tag: "link", name: "javascript:x()" },
            { tag: "option", name: "--help" },
            { tag: "long", name: "x".repeat(240) }
        ];
    }

    // Qt cannot remove a folder with a file whose name is not valid text.
    function cleanup() {
        fixture.removeUndecodable("undecodable");
    }

    // A file of that name in a folder of that name, of a size that no other has.
    function write(name: string): string {
        fixture.writeFile(name + "/" + name + ".kvt", ++size);
        return fixture.tempPath(name + "/" + name + ".kvt");
    }

    function verifyOpened(name: string): void {
        compare(app.status, "Opened " + name + ".kvt — " + size + " bytes.");
        compare(app.fileName, name + ".kvt");
        compare(input("fileNameField").text, name + ".kvt");
    }

    // Every text within an item, itself too.
    function textsIn(item: var): var {
        const own = item instanceof Text && item.text !== "" ? [item] : [];
        return Array.from(item.children).reduce((found, child) => found.concat(textsIn(child)), own);
    }

    function verifyShownPlainly(within: var, shown: string): void {
        const all = textsIn(within).filter(item => item.text === shown);
        verify(all.length > 0, shown + " among " + textsIn(within).map(item => item.text));
        for (const item of all) {
            compare(item.textFormat, Text.PlainText);
            verify(item.contentHeight <= 40, item.contentHeight);
            verify(item.contentWidth <= item.width + 1, item.contentWidth + " in " + item.width);
        }
    }

    function waitForRow(name: string): var {
        const list = () => find("chooserList", window.overlayItem);
        const rows = () => Array.from({ length: list().count }, (_, row) => list().itemAtIndex(row));
        tryVerify(() => rows().some(row => row?.name === name), 5000, "There is no row " + name);
        render();
        return rows().find(row => row?.name === name);
    }

    function closeDialog(): void {
        keyClick(Qt.Key_Escape);
        tryVerify(() => !window.asking());
    }

    function test_droppedOnTheWindow_data() { return names_data(); }

    function test_droppedOnTheWindow(data) {
        verify(fixture.drop(window, Qt.point(700, 400), [fixture.urlOf(write(data.name))]));
        verifyOpened(data.name);
        compare(find("statusLine").textFormat, Text.PlainText);
        verifyNothingFetched();
    }

    function test_droppedOnTheDonor_data() { return names_data(); }

    function test_droppedOnTheDonor(data) {
        app.tab = "segments";
        render();
        const place = inWindow(find("pickDonorButton"));
        const centre = Qt.point(place.x + place.width / 2, place.y + place.height / 2);
        verify(fixture.drop(window, centre, [fixture.urlOf(write(data.name))]));
        render();
        compare(app.status, "donor set: " + data.name + ".kvt");
        compare(find("pickedDonor").text, "Donor: " + data.name + ".kvt");
        verifyShownPlainly(find("segmentsView"), "Donor: " + data.name + ".kvt");
    }

    // In a folder of that name are a file and a folder of that name.
    function test_dialogs_data() { return names_data(); }

    function test_dialogs(data) {
        const path = write(data.name);
        fixture.writeFile(data.name + "/" + data.name + "/inner.kvt");
        app.openKvt(path);
        click("openFileButton");
        waitForRow(data.name);
        const file = waitForRow(data.name + ".kvt");
        verifyShownPlainly(window.overlayItem, data.name);
        for (const item of textsIn(window.overlayItem)) {
            if (item.text.includes(data.name))
                compare(item.textFormat, Text.PlainText, item.text);
        }
        app.setStatus("", -1);
        mouseDoubleClickSequence(file);
        tryVerify(() => !window.asking());
        verifyOpened(data.name);

        click("saveFileButton");
        waitForRow(data.name + ".kvt");
        compare(find("chooserName", window.overlayItem).text, data.name + ".kvt");
        verifyShownPlainly(window.overlayItem, data.name);
        app.hexPatch("BYTES");
        mouseClick(button("Save"));
        tryVerify(() => !window.asking());
        compare(app.status, "Saved.");
        compare(app.fileName, data.name + ".kvt");
        compare(fixture.start(path, 5), "BYTES");
        compare(fixture.files(data.name), [data.name + ".kvt"]);
        if (!/\n|x{240}/.test(data.name))
            saveTyped(data.name + " 2.kvt", data.name);
        app.openKvt(path);
        verifyOpened(data.name);
        verifyNothingFetched();
    }

    function saveTyped(name: string, folder: string): void {
        click("saveFileButton");
        waitForRow(folder);
        const field = find("chooserName", window.overlayItem);
        app.copyText(name, "");
        field.selectAll();
        field.paste();
        compare(field.text, name);
        keyClick(Qt.Key_Return);
        tryVerify(() => !window.asking());
        compare(app.status, "Saved.");
        compare(app.fileName, name);
        compare(fixture.start(fixture.tempPath(folder + "/" + name), 5), "BYTES");
        compare(fixture.files(folder).length, 2);
        fixture.removeFile(folder + "/" + name);
    }

    function test_folderDialog_data() { return names_data(); }

    function test_folderDialog(data) {
        app.openKvt(write(data.name));
        fixture.writeFile(data.name + "/" + data.name + "/x.kvt");
        app.tab = "search";
        click("searchBrowseButton");
        mouseDoubleClickSequence(waitForRow(data.name));
        tryVerify(() => find("chooserList", window.overlayItem).count === 0);
        render();
        verifyShownPlainly(window.overlayItem, data.name);
        mouseClick(button("Open"));
        tryVerify(() => !window.asking());
        compare("/" + find("searchFolderField").text, fixture.tempPath(data.name + "/" + data.name));
        tryCompare(app, "searchBusy", false);
        verify(app.searchHits.some(hit => hit.name === "x.kvt"));
        verifyNothingFetched();
    }

    function test_searchAndSort_data() { return names_data(); }

    function test_searchAndSort(data) {
        const path = write(data.name);
        app.tab = "search";
        app.scanFolder(fixture.tempPath(data.name), false, "", "", "", "");
        tryCompare(app, "searchBusy", false);
        render();
        compare(app.searchHits.length, 1);
        verifyShownPlainly(find("searchList"), data.name + ".kvt");
        mouseClick(find("searchHit0"));
        verifyOpened(data.name);

        app.tab = "sorter";
        render();
        const sorter = find("sorterView");
        sorter.files = [path];
        sorter.folder = fixture.tempPath("sorted");
        render();
        verifyShownPlainly(find("sorterList"), path);
        app.sortCopy([path], fixture.tempPath("sorted"), "");
        compare(app.status, "Copied 1 of 1 file(s).");
        verifyNothingFetched();
    }

    // A name that is not valid text cannot be spelled: the file is listed, and refused when it is asked for.
    function test_undecodable() {
        fixture.writeUndecodable("undecodable");
        fixture.writeFile("undecodable/plain.kvt");
        app.tab = "search";
        app.scanFolder(fixture.tempPath("undecodable"), true, "", "", "", "");
        tryCompare(app, "searchBusy", false);
        render();
        const names = app.searchHits.map(hit => hit.name);
        verify(names.includes("plain.kvt"));
        for (let row = 0; row < names.length; ++row) {
            compare(find("file", find("searchHit" + row)).text, names[row]);
            mouseClick(find("searchHit" + row));
            compare(app.fileName, names.slice(0, row + 1).includes("plain.kvt") ? "plain.kvt" : "");
        }
        app.tab = "main";
        app.openKvt(fixture.tempPath("undecodable/plain.kvt"));
        click("openFileButton");
        if (fixture.files("undecodable").includes("plain.kvt")) {
            app.setStatus("", -1);
            mouseDoubleClickSequence(waitForRow("plain.kvt"));
            tryVerify(() => !window.asking());
            compare(app.status, "Opened plain.kvt — 32 bytes.");
        } else {
            closeDialog();
        }
        verify(fixture.removeUndecodable("undecodable"));
    }
}
