import QtQuick
import QtTest
import KvtEditor

ViewTest {
    name: "MainView"

    function test_hexEditorNeedsAFile() {
        click("hexEditorButton");
        compare(app.showHex, false);
        compare(find("hexOverlay").visible, false);
        compare(app.status, "Open an KVT first.");
        compare(find("statusLine").color, VOXTheme.error);
    }

    function test_hexEditorOpensOverAFile() {
        fixture.openFile("truck.kvt", 100);
        click("hexEditorButton");
        compare(app.showHex, true);
        compare(find("hexOverlay").visible, true);
    }

    function test_cardShowsTheFile() {
        fixture.openFile("truck.kvt", 100);
        fixture.applyInfo({ created: "2024-03-05 14:07", softwareVersion: "4.0.1" });
        compare(find("fileNameField").text, "truck.kvt");
        compare(find("createdField").text, "2024-03-05 14:07");
        compare(find("versionField").text, "4.0.1");
        for (const name of ["fileNameField", "createdField", "versionField"])
            verify(find(name).locked, name);
    }

    function test_unsavedChangesAreMarked() {
        const mark = find("unsavedMark");
        verify(!mark.visible);
        fixture.openFile("truck.kvt", 100);
        verify(!mark.visible);
        app.hexPatch("FF");
        verify(mark.visible);
        compare(mark.text, "● Not saved");
        compare(find("unsavedToolTip", window).fullText, "1 byte changed in 1 place");
        compare(find("fileNameField").text, "truck.kvt");
        app.saveKvt(fixture.tempPath("truck.kvt"));
        verify(!mark.visible);
        // Identifiers are not saved with the file, and stay marked until there is another one.
        app.tab = "segments";
        const fields = itemsIn(window.contentItem, item => item.objectName === "vinField");
        compare(fields.length, 1);
        find("field", fields[0]).forceActiveFocus();
        type("1");
        verify(IdentifierEdits.made);
        // What is as it was is not edited.
        keyClick(Qt.Key_Backspace);
        verify(!IdentifierEdits.made);
        type("12");
        keyClick(Qt.Key_Backspace);
        app.tab = "main";
        compare(mark.text, "● Edited");
        compare(mark.Accessible.description, "Edited identifiers are not written into the file");
        app.hexPatch("FE");
        compare(mark.text, "● Not saved");
        compare(mark.Accessible.description,
            "1 byte changed in 1 place. Edited identifiers are not written into the file");
        app.saveKvt(fixture.tempPath("truck.kvt"));
        compare(mark.text, "● Edited");
        fixture.applyInfo({ vin: "1GC" });
        verify(mark.visible);
        fixture.openFile("other.kvt", 50);
        verify(!mark.visible);
    }

    function test_messageGoesOutAsTyped() {
        input("devEmailField").forceActiveFocus();
        type("me@example.com");
        input("devMessageField").forceActiveFocus();
        type("R&D asks");
        click("sendToDevButton");
        tryVerify(() => fixture.requestBodies().includes("R&D asks"));
        verify(fixture.requestBodies().includes("me@example.com"));
    }

    function test_longMessageGoesOutWhole() {
        app.copyText("x".repeat(40000) + " the end", "");
        input("devMessageField").forceActiveFocus();
        keyClick(Qt.Key_V, Qt.ControlModifier);
        click("sendToDevButton");
        tryVerify(() => fixture.requestBodies().includes("x".repeat(40000) + " the end"));
    }

    function test_doubleClickSendsOneMessage() {
        input("devEmailField").forceActiveFocus();
        type("me@example.com");
        input("devMessageField").forceActiveFocus();
        type("It is slow.");
        const before = fixture.requestCount();
        mouseDoubleClickSequence(find("sendToDevButton"));
        verifySent(before, 1);
    }

    function test_openDialog_data() {
        return [{ tag: "plain", name: "a.kvt" }, { tag: "percent", name: "100%.kvt" },
            { tag: "looks-encoded", name: "a%20b.kvt" }, { tag: "blank-hash-question", name: "a b#1?.kvt" },
            { tag: "umlaut-newline", name: "ä\nb.kvt" }, { tag: "ampersand", name: "R&D.kvt" }];
    }

    function test_openDialog(data) {
        fixture.openFile(data.name, 64);
        fixture.reset();
        const dialog = find("openDialog");
        compare(dialog.title, "Open KVT");
        compare(dialog.nameFilters, ["KVT files (*.kvt)", "All files (*)"]);
        dialog.selectedFile = fixture.urlOf(fixture.tempPath(data.name));
        dialog.accepted();
        compare(app.fileName, data.name);
        compare(app.statusOK, 1);
        compare(find("fileNameField").text, data.name);
    }

    function test_saveDialog() {
        fixture.openFile("100% a#b.kvt", 64);
        const dialog = find("saveDialog");
        compare(dialog.title, "Save KVT");
        compare(dialog.nameFilters, ["KVT files (*.kvt)"]);
        click("saveFileButton");
        tryVerify(() => dialog.visible);
        compare(FilePaths.pathFromUrl(dialog.selectedFile).split("/").pop(), "100% a#b.kvt");
        dialog.close();
        dialog.selectedFile = fixture.urlOf(fixture.tempPath("saved #1 100%.kvt"));
        dialog.accepted();
        compare(app.status, "Saved.");
        verify(fixture.fileExists(fixture.tempPath("saved #1 100%.kvt")));
        compare(app.fileName, "saved #1 100%.kvt");
    }

    // Accepted then, it would write the new file over the earlier one.
    function test_saveDialogGoesWhenAnotherFileOpens() {
        fixture.openFile("a.kvt", 64);
        const dialog = find("saveDialog");
        click("saveFileButton");
        tryVerify(() => dialog.visible);
        fixture.openFile("b.kvt", 64);
        tryVerify(() => !dialog.visible);
        compare(app.fileName, "b.kvt");
    }

    function test_dialogsStartWhereTheLastFileWas() {
        fixture.openFile("a.kvt", 64);
        const open = find("openDialog");
        open.selectedFile = fixture.urlOf(fixture.tempPath("a.kvt"));
        open.accepted();
        click("saveFileButton");
        const save = find("saveDialog");
        tryVerify(() => save.visible);
        compare(save.currentFolder, fixture.urlOf(fixture.tempPath("").replace(/\/$/, "")));
        compare(save.selectedFile, fixture.urlOf(fixture.tempPath("a.kvt")));
        save.close();
    }
}
