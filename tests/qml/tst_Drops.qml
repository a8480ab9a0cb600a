import QtQuick
import QtTest
import KvtEditor

// What is dragged from a file manager onto the window.
ViewTest {
    name: "Drops"

    function urls(names: var): var {
        return names.map(name => name.includes("://") ? name : fixture.urlOf(fixture.tempPath(name)));
    }

    function middle(name: string): point {
        const place = inWindow(find(name));
        return Qt.point(place.x + place.width / 2, place.y + place.height / 2);
    }

    function frameOf(name: string): var {
        return name === "windowDrop" ? find(name).framed.children[0] : find("dropFrame", find(name));
    }

    // Both a file and a folder to drop, and one of them with a name that says otherwise.
    function writeFiles(): void {
        for (const name of ["truck.kvt", "CAR.KVT", "100% a#b.kvt", "truck.bin", "tree/one.kvt",
                "tree/deep/two.kvt", "odd.kvt/three.kvt"])
            fixture.writeFile(name);
    }

    function showTab(key: string): void {
        app.tab = key;
        render();
    }

    function test_onTheWindow_data() {
        return [
            { tag: "one", dropped: ["truck.kvt"], opened: "truck.kvt" },
            { tag: "upper-case", dropped: ["CAR.KVT"], opened: "CAR.KVT" },
            { tag: "escaped", dropped: ["100% a#b.kvt"], opened: "100% a#b.kvt" },
            { tag: "several", dropped: ["truck.kvt", "CAR.KVT"], opened: "" },
            { tag: "one-beside-another-kind", dropped: ["truck.kvt", "truck.bin"], opened: "" },
            { tag: "other-kind", dropped: ["truck.bin"], opened: "" },
            { tag: "folder", dropped: ["tree"], opened: "" },
            { tag: "folder-named-like-a-file", dropped: ["odd.kvt"], opened: "" },
            { tag: "web-address", dropped: ["http://127.0.0.1:9/truck.kvt"], opened: "" },
            { tag: "other-computer", dropped: ["file://server/t/truck.kvt"], opened: "" },
            { tag: "nothing", dropped: [], opened: "" }
        ];
    }

    function test_onTheWindow(data) {
        writeFiles();
        compare(fixture.drop(window, Qt.point(700, 400), urls(data.dropped)), data.opened !== "");
        compare(app.fileName, data.opened);
        compare(app.statusOK, data.opened !== "" ? 1 : -1);
    }

    // Not even the file that has the escape itself in its name.
    function test_noUtf8_data() {
        return ["caf%E9.kvt", "%E9/x.kvt"].map(name => ({ tag: name, name: name }));
    }

    function test_noUtf8(data) {
        fixture.writeFile(data.name);
        const dropped = "file://" + fixture.tempPath(data.name);
        fixture.drop(window, Qt.point(700, 400), [dropped]);
        compare(app.fileName, "");
        verify(app.statusOK !== 1);
        verify(fixture.drop(window, Qt.point(700, 400), urls([data.name])));
        compare(app.fileName, data.name.split("/").pop());
    }

    function test_anywhere_data() {
        return ["nav_stock", "helpButton", "identifiersPanel", "fileNameField", "statusLine"].map(
            name => ({ tag: name }));
    }

    function test_anywhere(data) {
        writeFiles();
        app.setStatus("Ready.");
        render();
        verify(fixture.drop(window, middle(data.tag), urls(["truck.kvt"])));
        compare(app.fileName, "truck.kvt");
    }

    function test_everyViewTakesIt_data() {
        return ["main", "convert", "segments", "search", "sorter", "xdf", "patcher", "tools", "stock",
            "feedback"].map(key => ({ tag: key }));
    }

    function test_everyViewTakesIt(data) {
        writeFiles();
        showTab(data.tag);
        const view = inWindow(find("viewStack"));
        verify(fixture.drop(window, Qt.point(view.right - 40, view.bottom - 40), urls(["truck.kvt"])));
        compare(app.fileName, "truck.kvt");
        compare(app.tab, data.tag);
    }

    function test_frameWhileItHovers() {
        writeFiles();
        const frame = frameOf("windowDrop");
        compare(frame.visible, false);
        verify(fixture.dragTo(window, Qt.point(700, 400), urls(["truck.kvt"])));
        compare(frame.visible, true);
        compare(inWindow(frame), Qt.rect(0, 0, window.width, window.height));
        compare(frame.border.color, VOXTheme.orangeBright);
        fixture.dragAway(window);
        compare(frame.visible, false);
        verify(!fixture.dragTo(window, Qt.point(700, 400), urls(["truck.bin"])));
        compare(frame.visible, false);
        fixture.dragAway(window);
        compare(app.fileName, "");
    }

    function test_nothingBehindTheHexEditor_data() {
        return [{ tag: "main", over: "fileNameField" }, { tag: "sorter", over: "sorterFilesField" },
            { tag: "segments", over: "pickDonorButton" }];
    }

    function test_nothingBehindTheHexEditor(data) {
        writeFiles();
        fixture.openFile("open.kvt", 100);
        showTab(data.tag);
        const place = middle(data.over);
        app.showHex = true;
        app.setStatus("Ready.");
        // The hex editor compares with what is dropped on it.
        const comparing = app.hexEditing().compare;
        for (const name of ["truck.kvt", "truck.bin"]) {
            compare(fixture.drop(window, place, urls([name])), true);
            tryCompare(comparing, "name", name);
            tryCompare(app, "status", "Compared with " + name + ".");
        }
        verify(!fixture.drop(window, place, urls(["truck.kvt", "truck.bin"])));
        verify(!fixture.drop(window, place, [fixture.urlOf(fixture.tempPath(""))]));
        compare(app.fileName, "open.kvt");
        compare(find("sorterFilesField").text, "");
        app.showHex = false;
        verify(fixture.drop(window, place, urls(["truck.kvt"])));
    }

    function test_nothingBehindADialog() {
        writeFiles();
        const dialog = find("openDialog");
        click("openFileButton");
        tryVerify(() => dialog.visible);
        compare(fixture.drop(window, Qt.point(700, 400), urls(["truck.kvt"])), false);
        compare(fixture.drop(window, Qt.point(5, 895), urls(["truck.kvt"])), false);
        dialog.close();
        tryVerify(() => !window.asking());
        verify(fixture.drop(window, Qt.point(700, 400), urls(["truck.kvt"])));
    }

    function test_nothingBehindAPopup() {
        writeFiles();
        showTab("tools");
        const popup = find("vinHexPopup");
        popup.open();
        tryVerify(() => popup.opened);
        compare(fixture.drop(window, Qt.point(5, 895), urls(["truck.kvt"])), false);
        popup.close();
        tryVerify(() => !popup.visible);
        verify(fixture.drop(window, Qt.point(5, 895), urls(["truck.kvt"])));
    }

    function test_aToolTipIsNotInTheWay() {
        writeFiles();
        const button = find("openFileButton");
        button.forceActiveFocus(Qt.TabFocusReason);
        tryVerify(() => fixture.find(button, "hint")?.visible === true);
        verify(fixture.drop(window, Qt.point(700, 400), urls(["truck.kvt"])));
    }

    // One file would open as well: the field comes first.
    function test_sourceFilesOfTheSorter() {
        writeFiles();
        showTab("sorter");
        const place = middle("sorterFilesField");
        verify(fixture.dragTo(window, place, urls(["truck.kvt"])));
        compare(frameOf("sorterFilesField").visible, true);
        compare(frameOf("windowDrop").visible, false);
        fixture.dragAway(window);
        verify(fixture.drop(window, place, urls(["truck.kvt"])));
        compare(find("sorterFilesField").text, "1 file(s)");
        compare(app.fileName, "");
        verify(fixture.drop(window, place, urls(["truck.kvt", "CAR.KVT", "truck.bin"])));
        compare(find("sorterFilesField").text, "2 file(s)");
    }

    // From the tab's empty part onto the field and off it again: one frame at a time says who takes it.
    function test_onTheWayOverTheWindow() {
        writeFiles();
        showTab("sorter");
        const field = frameOf("sorterFilesField");
        const whole = frameOf("windowDrop");
        const truck = urls(["truck.kvt"]);
        const beside = middle("sorterList");
        const steps = [beside, middle("sorterFilesField"), beside, middle("sorterFilesField")];
        verify(fixture.dragTo(window, Qt.point(5, 5), truck));
        for (const place of steps) {
            fixture.dragOn(window, place, truck);
            verify(fixture.dragOn(window, Qt.point(place.x + 2, place.y + 2), truck));
            compare(field.visible, place !== beside);
            compare(whole.visible, place === beside);
        }
        fixture.dragAway(window);
        verify(!field.visible && !whole.visible);
        const both = urls(["truck.kvt", "CAR.KVT"]);
        verify(!fixture.dragTo(window, beside, both));
        fixture.dragOn(window, middle("sorterFilesField"), both);
        verify(fixture.dragOn(window, middle("sorterFilesField"), both));
        compare(field.visible, true);
        verify(!fixture.dragOn(window, beside, both));
        verify(!field.visible && !whole.visible);
        fixture.dragAway(window);
    }

    function test_searchFolder() {
        writeFiles();
        showTab("search");
        const place = middle("searchFolderField");
        verify(fixture.dragTo(window, place, urls(["tree"])));
        compare(frameOf("searchFolderField").visible, true);
        fixture.dragAway(window);
        verify(fixture.drop(window, place, urls(["tree"])));
        compare("/" + find("searchFolderField").text, fixture.tempPath("tree"));
        tryCompare(app, "status", "Found 2 file(s).");
        verify(fixture.drop(window, place, urls(["odd.kvt"])));
        tryCompare(app, "status", "Found 1 file(s).");
        compare(app.fileName, "");
    }

    function test_searchFolderTakesNothingElse_data() {
        return [
            { tag: "two-folders", dropped: ["tree", "odd.kvt"] },
            { tag: "file", dropped: ["truck.bin"] },
            { tag: "not-there", dropped: ["tree/nowhere"] },
            { tag: "web-address", dropped: ["http://127.0.0.1:9/"] },
            { tag: "nothing", dropped: [] }
        ];
    }

    function test_searchFolderTakesNothingElse(data) {
        writeFiles();
        showTab("search");
        compare(fixture.drop(window, middle("searchFolderField"), urls(data.dropped)), false);
        compare(find("searchFolderField").text, "");
        compare(app.status, "");
    }

    function test_aFileOnTheSearchFolderOpens() {
        writeFiles();
        showTab("search");
        verify(fixture.drop(window, middle("searchFolderField"), urls(["truck.kvt"])));
        compare(app.fileName, "truck.kvt");
        compare(find("searchFolderField").text, "");
    }

    function test_baseAndDonor_data() {
        return [
            { tag: "base", button: "pickBaseButton", label: "pickedBase", shown: "Base: truck.kvt" },
            { tag: "donor", button: "pickDonorButton", label: "pickedDonor", shown: "Donor: truck.kvt" }
        ];
    }

    function test_baseAndDonor(data) {
        writeFiles();
        showTab("segments");
        const place = middle(data.button);
        verify(fixture.dragTo(window, place, urls(["truck.kvt"])));
        compare(frameOf(data.button).visible, true);
        compare(frameOf("windowDrop").visible, false);
        fixture.dragAway(window);
        verify(fixture.drop(window, place, urls(["truck.kvt"])));
        compare(app.status, data.tag + " set: truck.kvt");
        compare(find(data.label).text, data.shown);
        compare(app.fileName, "");
        compare(fixture.drop(window, place, urls(["truck.kvt", "CAR.KVT"])), false);
        compare(fixture.drop(window, place, urls(["truck.bin"])), false);
        compare(app.status, data.tag + " set: truck.kvt");
    }

    // What was dropped goes out, as after the dialog.
    function test_droppedBaseAndDonorAreSent() {
        writeFiles();
        showTab("segments");
        verify(fixture.drop(window, middle("pickDonorButton"), urls(["100% a#b.kvt"])));
        verify(fixture.drop(window, middle("pickBaseButton"), urls(["truck.kvt"])));
        click("segmentSwapButton");
        tryVerify(() => fixture.requestBodies().includes("100% a#b.kvt"));
        verify(fixture.requestBodies().includes("truck.kvt"));
    }
}
