import QtQuick
import QtTest
import KvtEditor

// Files and folders of hostile names in the views that only name them: the open file in each of them, the swap of
// segments, the folder that is searched, a file that was converted.
HostileTest {
    id: root

    name: "HostileFiles"

    // The name of the open file in each view that tells it.
    function test_openFile_data() { return fileNames(); }

    function test_openFile(data) {
        const path = write(data.name);
        app.openKvt(path);
        compare(app.fileName, data.name + ".kvt");
        const places = [["main", "fileNameField"], ["convert", "openFileName"], ["segments", "openFileName"]];
        for (const [tab, field] of places) {
            show(tab);
            const view = find(tab + "View");
            // A line of input has blanks for what would end it.
            compare(find("field", find(field, view)).text.length, (data.name + ".kvt").length, tab);
            verifyView(data.name);
        }
        const base = inWindow(find("pickBaseButton"));
        verify(fixture.drop(window, Qt.point(base.x + 20, base.y + 10), [fixture.urlOf(path)]));
        render();
        compare(find("pickedBase").text, "Base: " + data.name + ".kvt");
        compare(find("pickedBase").Accessible.name, "Base: " + data.name + ".kvt");
        verifyView(data.name);
        if (find("pickedBase").truncated)
            verifyTip(find("pickedBase"), find("fullText", find("pickedBase")), "Base: " + data.name + ".kvt");
        app.showHex = true;
        render();
        compare(find("hexFileName").text, data.name + ".kvt");
        verify(verifyView(data.name) >= 1);
        verifyNothingFetched();
        app.showHex = false;
    }

    // The name of the folder is told while it is searched, those of the files in it afterwards.
    function test_searchedFolder_data() { return fileNames(); }

    function test_searchedFolder(data) {
        const name = "<b>" + data.name.slice(0, 60);
        fixture.writeFile(name + "/" + data.name + ".kvt");
        show("search");
        verify(fixture.drop(window, centreOf("searchFolderField"), [fixture.urlOf(fixture.tempPath(name))]));
        compare(app.status, "Searching " + shownPath(fixture.tempPath(name)) + " ...");
        compare(find("statusLine").text, app.status);
        tryCompare(app, "searchBusy", false);
        render();
        compare(app.searchHits.length, 1);
        const row = find("searchHit0");
        compare(find("file", row).text, data.name + ".kvt");
        verify(fixture.spokenTexts(row).includes(data.name + ".kvt, OS " + app.searchHits[0].os));
        verify(verifyView(data.name) >= 1);
        verifyTip(row, find("fullText", find("searchList")), app.searchHits[0].path);
        verify(app.searchHits[0].path.endsWith("/" + data.name + ".kvt"));
        verifyNothingFetched();
    }

    // A converted file is named after its input.
    function test_convertedFile_data() { return fileNames(); }

    function test_convertedFile(data) {
        const path = write(data.name);
        show("tools");
        answerWords("converted", () => app.toolConvert("xcal", path));
        compare(app.status, "Saved " + data.name + ".bin");
        verifyView(data.name);
        compare(find("statusLine").text, app.status);
        show("feedback");
        verifyView(data.name);
        verifyNothingFetched();
    }
}
