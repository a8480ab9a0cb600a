import QtQuick
import QtTest
import KvtEditor

// What the sorter was given, and what it made of it: files, folders and sort keys of hostile names.
HostileTest {
    id: root

    name: "HostileSorter"

    function test_sorter_data() { return fileNames(); }

    function test_sorter(data) {
        const path = write(data.name);
        const folder = fixture.tempPath("out " + data.name.slice(0, 60));
        show("sorter");
        verify(fixture.drop(window, centreOf("sorterFilesField"), Array(40).fill(fixture.urlOf(path))));
        find("sorterView").folder = shownPath(folder);
        const order = input("sorterOrderField");
        order.text = "Year, <b>Make</b> ,../..,Make,OS," + data.name.slice(0, 60).replace(/,/g, "");
        render();
        const list = find("sorterList");
        compare(list.count, 40);
        for (const row of [0, 39]) {
            list.positionViewAtIndex(row, ListView.Contain);
            render();
            const item = list.itemAtIndex(row);
            compare(find("path", item).text, shownPath(path));
            compare(item.Accessible.name, shownPath(path));
            verify(fixture.spokenTexts(item).includes(shownPath(path)));
            verifyView(data.name);
        }
        compare(find("sorterSummary").text, "40 file(s) selected → " + shownPath(folder));
        click("sorterStartButton");
        tryCompare(app, "status", "Copied 40 of 40 file(s).");
        tryCompare(find("sorterStartButton"), "text", "START SORT");
        verify(verifyView(data.name) >= 5);
        if (data.year !== null)
            verify(fixture.fileExists(folder + "/2014/Unknown"));
        if (list.itemAtIndex(39).shortened)
            verifyTip(list.itemAtIndex(39), find("fullText", list), shownPath(path));
        verifyNothingFetched();
    }

    // What cannot be copied is told of as plainly.
    function test_sorterFailures() {
        show("sorter");
        const sorter = find("sorterView");
        sorter.files = ["/<b>gone</b>.kvt", "/a\nb.kvt", "\u0000.kvt", ""];
        sorter.folder = fixture.tempPath("failures <b>");
        render();
        click("sorterStartButton");
        tryCompare(app, "status", "Copied 0 of 4 file(s).");
        tryCompare(find("sorterStartButton"), "text", "START SORT");
        verifyView("<b>gone</b>");
        fixture.writeFile("no <img> folder");
        sorter.folder = fixture.tempPath("no <img> folder");
        click("sorterStartButton");
        tryCompare(app, "status", "Destination folder is missing.");
        tryCompare(find("sorterStartButton"), "text", "START SORT");
        verifyView("<img>");
        verifyNothingFetched();
    }
}
