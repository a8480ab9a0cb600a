import QtQuick
import QtQuick.Dialogs
import QtTest
import KvtEditor

ViewTest {
    id: root

    name: "SorterView"

    readonly property var tunes: ["in/tune_2014_abc.kvt", "in/e38_12654321.kvt"]

    function chooseFiles(names: var): void {
        for (const name of names)
            fixture.writeFile(name);
        app.tab = "sorter";
        find("sorterView").files = names.map(name => fixture.tempPath(name).slice(1));
        render();
    }

    function chooseFolder(name: string): void {
        fixture.writeFile(name + "/there already");
        const dialog = find("sorterFolderDialog");
        click("sorterBrowseFolderButton");
        tryVerify(() => dialog.visible);
        dialog.selectedFolder = fixture.urlOf(fixture.tempPath(name));
        dialog.accept();
        tryVerify(() => !dialog.visible);
    }

    function test_atFirst() {
        app.tab = "sorter";
        compare(find("sorterFilesField").text, "");
        compare(find("caption", find("sorterFilesField")).text, "SOURCE FILES");
        compare(find("sorterFolderField").title, "Output Folder");
        verify(find("sorterFolderField").locked);
        compare(find("sorterOrderField").title, "Sort by / Then");
        compare(find("sorterOrderField").text, "Year,Make,OS");
        compare(find("sorterSubfoldersBox").text, "Include subfolders");
        verify(find("sorterSubfoldersBox").checked);
        compare(find("sorterStartButton").text, "START SORT");
        compare(find("sorterSummary").text, "0 file(s) selected");
        compare(find("sorterList").count, 0);
        const dialog = find("sorterFilesDialog");
        compare(dialog.nameFilters, ["KVT (*.kvt)"]);
        compare(dialog.fileMode, FileDialog.OpenFiles);
    }

    function test_filesDialog() {
        fixture.writeFile("picked/100% a#b.kvt");
        app.tab = "sorter";
        const dialog = find("sorterFilesDialog");
        click("sorterBrowseFilesButton");
        tryVerify(() => dialog.visible);
        dialog.selectedFile = fixture.urlOf(fixture.tempPath("picked/100% a#b.kvt"));
        dialog.accepted();
        dialog.close();
        compare(find("sorterFilesField").text, "1 file(s)");
        render();
        compare("/" + find("path", find("sorterFile0")).text, fixture.tempPath("picked/100% a#b.kvt"));
    }

    function test_choiceIsShown() {
        chooseFiles(["in/100% a#b.kvt", "in/<b>R&D.kvt"]);
        compare(find("sorterFilesField").text, "2 file(s)");
        compare(find("sorterSummary").text, "2 file(s) selected");
        chooseFolder("out #1");
        compare("/" + find("sorterFolderField").text, fixture.tempPath("out #1"));
        compare(find("sorterSummary").text, "2 file(s) selected → " + find("sorterFolderField").text);
        compare(find("sorterList").count, 2);
        const paths = [0, 1].map(row => find("path", find("sorterFile" + row)));
        compare("/" + paths[0].text, fixture.tempPath("in/100% a#b.kvt"));
        compare("/" + paths[1].text, fixture.tempPath("in/<b>R&D.kvt"));
        compare(paths[1].textFormat, Text.PlainText);
        compare(paths[1].elide, Text.ElideMiddle);
    }

    function test_cancelForgetsTheChoiceOnly() {
        chooseFiles(tunes);
        chooseFolder("out");
        input("sorterOrderField").forceActiveFocus();
        type("X");
        click("sorterCancelButton");
        compare(find("sorterFilesField").text, "");
        compare(find("sorterFolderField").text, "");
        compare(find("sorterSummary").text, "0 file(s) selected");
        compare(find("sorterList").count, 0);
        compare(find("sorterOrderField").text, "XYear,Make,OS");
        compare(app.status, "");
    }

    function test_sortsIntoFolders() {
        chooseFiles(tunes);
        chooseFolder("sorted");
        click("sorterStartButton");
        tryCompare(app, "status", "Copied 2 of 2 file(s).");
        compare(app.statusOK, 1);
        verify(fixture.fileExists(fixture.tempPath("sorted/2014/UnknownMake/UnknownOS/tune_2014_abc.kvt")));
        tryCompare(find("sorterStartButton"), "text", "START SORT");
    }

    function test_orderIsPassedOn() {
        chooseFiles(["in/e38_12654321.kvt"]);
        chooseFolder("by-os");
        const order = input("sorterOrderField");
        order.forceActiveFocus();
        order.selectAll();
        type("os");
        mouseClick(find("box", find("sorterSubfoldersBox")));
        click("sorterStartButton");
        tryCompare(app, "status", "Copied 1 of 1 file(s).");
        verify(fixture.fileExists(fixture.tempPath("by-os/12654321/e38_12654321.kvt")));
    }

    // What was on the button, the pointer and the screen at the moment the copies were made.
    function test_worksVisibly() {
        chooseFiles(tunes);
        chooseFolder("visibly");
        const button = find("sorterStartButton");
        const area = find("sorterWaitArea");
        const frames = createTemporaryObject(spyComponent, root,
            { target: window, signalName: "frameSwapped" });
        const seen = [];
        const look = () => seen.push({ text: button.text, waiting: area.visible, frames: frames.count });
        app.statusChanged.connect(look);
        button.forceActiveFocus(Qt.TabFocusReason);
        button.clicked();
        compare(button.text, "SORTING...");
        compare(button.enabled, false);
        verify(area.visible);
        compare(area.cursorShape, Qt.WaitCursor);
        compare(app.status, "");
        tryCompare(button, "text", "START SORT");
        compare(seen.length, 1);
        compare(seen[0].text, "SORTING...");
        verify(seen[0].waiting);
        verify(seen[0].frames >= 2, seen[0].frames);
        compare(button.enabled, true);
        verify(!area.visible);
        compare(window.activeFocusItem, button);
    }

    function test_clickedTwiceSortsOnce() {
        chooseFiles(tunes);
        chooseFolder("twice");
        const changes = createTemporaryObject(spyComponent, root,
            { target: app, signalName: "statusChanged" });
        mouseDoubleClickSequence(find("sorterStartButton"));
        tryCompare(find("sorterStartButton"), "text", "START SORT");
        compare(changes.count, 1);
    }

    function test_hiddenWindowSortsAllTheSame() {
        chooseFiles(tunes);
        chooseFolder("hidden");
        window.visible = false;
        find("sorterStartButton").clicked();
        tryCompare(app, "status", "Copied 2 of 2 file(s).");
        tryCompare(find("sorterStartButton"), "text", "START SORT");
    }

    function test_drop_data() {
        return [
            { tag: "one", dropped: ["file:///t/a.kvt"], taken: ["t/a.kvt"] },
            { tag: "upper-case", dropped: ["file:///t/A.KVT"], taken: ["t/A.KVT"] },
            { tag: "several", dropped: ["file:///t/a.kvt", "file:///t/b.kvt"],
                taken: ["t/a.kvt", "t/b.kvt"] },
            { tag: "escaped", dropped: ["file:///t/100%25%20a%23.kvt"], taken: ["t/100% a#.kvt"] },
            { tag: "others-are-left-out", dropped: ["file:///t/a.kvt", "file:///t/b.bin"],
                taken: ["t/a.kvt"] },
            { tag: "other-kind", dropped: ["file:///t/b.ctz"], taken: [] },
            { tag: "web-address", dropped: ["http://127.0.0.1:9/a.kvt"], taken: [] },
            { tag: "other-computer", dropped: ["file://server/t/a.kvt"], taken: [] },
            { tag: "nothing", dropped: [], taken: [] }
        ];
    }

    function test_drop(data) {
        app.tab = "sorter";
        render();
        const field = inWindow(find("sorterFilesField"));
        const place = Qt.point(field.x + field.width / 2, field.y + field.height / 2);
        compare(fixture.drop(window, place, data.dropped), data.taken.length > 0);
        compare(find("sorterFilesField").text, data.taken.length ? data.taken.length + " file(s)" : "");
        render();
        const shown = data.taken.map((path, row) => find("path", find("sorterFile" + row)).text);
        compare(shown, data.taken);
    }

    function test_longListIsRight() {
        const names = Array.from({ length: 2000 },
            (_, index) => "file:///far/away/" + "x".repeat(150) + index + ".kvt");
        app.tab = "sorter";
        render();
        const field = inWindow(find("sorterFilesField"));
        verify(fixture.drop(window, Qt.point(field.x + 20, field.y + 30), names));
        const list = find("sorterList");
        compare(list.count, 2000);
        for (const row of [0, 1999, 1000]) {
            list.positionViewAtIndex(row, ListView.Beginning);
            render();
            const path = find("path", find("sorterFile" + row));
            verify(path.text.endsWith("x" + row + ".kvt"), path.text);
            verify(path.truncated);
        }
        const tip = find("fullText", list);
        mouseMove(find("sorterFile1000"));
        tryVerify(() => tip.visible);
        compare(tip.contentItem.text, find("path", find("sorterFile1000")).text);
        compare(tip.contentItem.textFormat, Text.PlainText);
    }

    function test_tabKeyWalksInReadingOrder() {
        app.tab = "sorter";
        const order = [input("sorterFilesField"), find("sorterBrowseFilesButton"), input("sorterFolderField"),
            find("sorterBrowseFolderButton"), input("sorterOrderField"),
            find("box", find("sorterSubfoldersBox")), find("sorterStartButton"),
            find("sorterCancelButton"), find("sorterList")];
        order[0].forceActiveFocus(Qt.TabFocusReason);
        for (const item of order) {
            compare(window.activeFocusItem, item, item.objectName);
            verify(item.Accessible.name !== "", item.objectName);
            keyClick(Qt.Key_Tab);
        }
    }

    Component {
        id: spyComponent

        SignalSpy {}
    }
}
