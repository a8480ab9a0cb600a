import QtQuick
import QtTest
import KvtEditor

ViewTest {
    id: root

    name: "SearchView"

    // A folder of its own with those files in it, by its path.
    function folderOf(name: string, files: var): string {
        for (const file of files)
            fixture.writeFile(name + "/" + file);
        return fixture.tempPath(name);
    }

    // Shows the view with the hits of that folder.
    function search(folder: string): var {
        app.tab = "search";
        app.scanFolder(folder, true, "", "", "", "");
        tryCompare(app, "searchBusy", false);
        render();
        return find("searchList");
    }

    function chooseFolder(folder: string): void {
        const dialog = find("searchFolderDialog");
        click("searchBrowseButton");
        tryVerify(() => dialog.visible);
        dialog.selectedFolder = fixture.urlOf(folder);
        dialog.accept();
        tryVerify(() => !dialog.visible);
    }

    function rowOf(name: string): var {
        return find("searchHit" + app.searchHits.findIndex(hit => hit.name === name));
    }

    function manyFiles(count: int): var {
        return Array.from({ length: count }, (_, index) => "e38_" + (12000000 + index) + "_2014.kvt");
    }

    function test_fields() {
        app.tab = "search";
        compare(find("searchFolderField").title, "Search Folder");
        verify(find("searchFolderField").locked);
        const titles = { Name: "Name", Os: "OS", Make: "Make", Year: "Year" };
        for (const key in titles) {
            compare(find("search" + key + "Field").title, titles[key]);
            verify(!find("search" + key + "Field").locked, key);
        }
        compare(find("searchRecursiveBox").text, "Include subfolders");
        compare(find("searchRecursiveBox").checked, true);
        compare(find("searchButton").text, "SEARCH");
        compare(find("searchCancelButton").enabled, false);
        compare(find("searchEmptyLine").text, "No results yet.");
        verify(find("searchEmptyLine").visible);
    }

    function test_subfoldersFollowTheController() {
        app.tab = "search";
        const check = find("searchRecursiveBox");
        mouseClick(find("box", check));
        compare(app.searchRecursive, "0");
        app.searchRecursive = "1";
        compare(check.checked, true);
        mouseClick(find("box", check));
        compare(check.checked, false);
        compare(app.searchRecursive, "0");
    }

    function test_searchWithoutAFolderAsksForOne() {
        app.tab = "search";
        const dialog = find("searchFolderDialog");
        click("searchButton");
        tryVerify(() => dialog.visible);
        compare(app.status, "");
        dialog.close();
    }

    function test_browseAsksForAFolder() {
        app.tab = "search";
        const dialog = find("searchFolderDialog");
        click("searchBrowseButton");
        tryVerify(() => dialog.visible);
        dialog.close();
    }

    function test_chosenFolderIsSearchedAtOnce() {
        const folder = folderOf("chosen #1 100%", ["a_2014.kvt", "below/b_2015.ctz", "c.bin"]);
        app.tab = "search";
        input("searchYearField").forceActiveFocus();
        type("2015");
        chooseFolder(folder);
        compare("/" + find("searchFolderField").text, folder);
        tryCompare(app, "status", "Found 1 file(s).");
        compare(app.searchHits[0].name, "b_2015.ctz");
    }

    // Nothing is left of the root's path, so that is refused in words, and not asked for again.
    function test_rootFolderIsRefusedInWords() {
        app.tab = "search";
        const dialog = find("searchFolderDialog");
        click("searchBrowseButton");
        tryVerify(() => dialog.visible);
        dialog.close();
        dialog.selectedFolder = "file:///";
        dialog.accepted();
        compare(app.status, "Pick a search folder first.");
        compare(app.statusOK, 0);
        verify(!dialog.visible);
    }

    function test_everyFilterCounts_data() {
        return [
            { tag: "name", field: "searchNameField", text: "TUNE", hits: ["tune_2014.kvt"] },
            { tag: "os", field: "searchOsField", text: "1265", hits: ["e38_12654321.kvt"] },
            { tag: "make", field: "searchMakeField", text: "chevy", hits: ["x_2015.kvt"] },
            { tag: "year", field: "searchYearField", text: "2014", hits: ["tune_2014.kvt"] }
        ];
    }

    function test_everyFilterCounts(data) {
        const folder = folderOf("filters", ["tune_2014.kvt", "e38_12654321.kvt", "Chevy/x_2015.kvt"]);
        app.tab = "search";
        chooseFolder(folder);
        tryCompare(app, "searchBusy", false);
        compare(app.searchHits.length, 3);
        input(data.field).forceActiveFocus();
        type(data.text);
        keyClick(Qt.Key_Return);
        tryVerify(() => !app.searchBusy && app.searchHits.length === 1);
        compare(app.searchHits.map(hit => hit.name), data.hits);
    }

    function test_withoutSubfolders() {
        const folder = folderOf("flat", ["a.kvt", "below/b.kvt"]);
        app.tab = "search";
        mouseClick(find("box", find("searchRecursiveBox")));
        chooseFolder(folder);
        tryCompare(app, "status", "Found 1 file(s).");
    }

    function test_whileItSearches() {
        const folder = folderOf("busy", ["a.kvt"]);
        app.tab = "search";
        app.scanFolder(folder, true, "", "", "", "");
        // Nothing of the scan arrives before the events are looked at.
        compare(find("searchButton").text, "SEARCHING...");
        compare(find("searchButton").enabled, false);
        compare(find("searchCancelButton").enabled, true);
        compare(find("searchEmptyLine").text, "Scanning folder ...");
        find("searchCancelButton").clicked();
        compare(app.status, "Cancelling search ...");
        tryCompare(app, "searchBusy", false);
        compare(find("searchButton").text, "SEARCH");
        compare(find("searchButton").enabled, true);
        compare(find("searchCancelButton").enabled, false);
    }

    function test_clearEmptiesTheList() {
        const list = search(folderOf("clear", ["a.kvt", "b.kvt"]));
        compare(list.count, 2);
        compare(find("searchEmptyLine").visible, false);
        click("searchClearButton");
        compare(list.count, 0);
        compare(find("searchEmptyLine").visible, true);
        compare(find("searchEmptyLine").text, "No results yet.");
    }

    function test_rowShowsItsHit() {
        search(folderOf("row", ["e38_12654321_2014.kvt"]));
        const row = find("searchHit0");
        compare(row.height, 32);
        compare(find("file", row).text, "e38_12654321_2014.kvt");
        compare(find("file", row).elide, Text.ElideMiddle);
        compare(find("os", row).text, "12654321");
        compare(find("year", row).text, "2014");
        compare(find("make", row).text, "");
    }

    function test_clickOpensATune() {
        search(folderOf("open", ["a b#1 100%.KVT"]));
        click("searchHit0");
        compare(app.fileName, "a b#1 100%.KVT");
        compare(app.tab, "main");
    }

    function test_otherHitsAreNotClickable() {
        search(folderOf("other", ["a.kvt", "b.ctz"]));
        const tune = rowOf("a.kvt");
        const other = rowOf("b.ctz");
        verify(tune.clickable);
        verify(!other.clickable);
        mouseMove(other);
        tryVerify(() => other.hovered);
        compare(other.color.a, 0);
        mouseMove(tune);
        tryVerify(() => tune.hovered && !other.hovered);
        compare(tune.color, VOXTheme.accent(0.12));
        mouseClick(other);
        compare(app.fileName, "");
        compare(app.tab, "search");
    }

    function test_keyboardMovesAndOpens() {
        const list = search(folderOf("keys", ["a.kvt", "b.kvt", "c.kvt"]));
        list.forceActiveFocus(Qt.TabFocusReason);
        compare(list.currentIndex, -1);
        keyClick(Qt.Key_Return);
        compare(app.tab, "search");
        const steps = [[Qt.Key_Down, 0], [Qt.Key_Down, 1], [Qt.Key_End, 2], [Qt.Key_Down, 2],
            [Qt.Key_Home, 0], [Qt.Key_Up, 0], [Qt.Key_PageDown, 2], [Qt.Key_PageUp, 0], [Qt.Key_Down, 1]];
        for (const [key, expected] of steps) {
            keyClick(key);
            compare(list.currentIndex, expected);
        }
        compare(find("searchHit1").color, VOXTheme.accent(0.22));
        keyClick(Qt.Key_Return);
        compare(app.fileName, app.searchHits[1].name);
        compare(app.tab, "main");
    }

    function shownNames(): var {
        render();
        return [0, 1, 2].map(row => find("file", find("searchHit" + row)).text);
    }

    function test_sortsByAColumn() {
        const list = search(folderOf("sorted", ["k10_2014.kvt", "k9_2016.kvt", "K8_2015.kvt"]));
        const found = app.searchHits.map(hit => hit.name);
        compare(shownNames(), found);
        click("headingFile");
        compare(shownNames(), ["K8_2015.kvt", "k9_2016.kvt", "k10_2014.kvt"]);
        compare(find("headingFile").text, "File ▴");
        compare(find("headingFile").Accessible.description, "Sorted upwards");
        click("headingFile");
        compare(shownNames(), ["k10_2014.kvt", "k9_2016.kvt", "K8_2015.kvt"]);
        compare(find("headingFile").text, "File ▾");
        click("headingYear");
        compare(find("headingFile").text, "File");
        compare(shownNames(), ["k10_2014.kvt", "K8_2015.kvt", "k9_2016.kvt"]);
        // What opens is what is shown there, by mouse and by key.
        mouseClick(find("searchHit1"));
        compare(app.fileName, "K8_2015.kvt");
        app.tab = "search";
        list.forceActiveFocus();
        keyClick(Qt.Key_Down);
        keyClick(Qt.Key_Return);
        compare(app.fileName, "k9_2016.kvt");
        app.tab = "search";
        click("headingYear");
        click("headingYear");
        compare(shownNames(), found);
    }

    function test_sortsWhatIsFoundNext() {
        const list = search(folderOf("before", ["b.kvt", "a.kvt", "c.kvt"]));
        click("headingFile");
        list.currentIndex = 2;
        search(folderOf("after", ["y.kvt", "x.kvt", "z.kvt"]));
        compare(shownNames(), ["x.kvt", "y.kvt", "z.kvt"]);
        compare(list.currentIndex, -1);
    }

    function test_menuOfARow_data() {
        return [{ tag: "mouse" }, { tag: "menu", key: Qt.Key_Menu }, { tag: "shift-f10", key: Qt.Key_F10 }];
    }

    function test_menuOfARow(data) {
        const list = search(folderOf("odd #1 é", ["a.kvt", "b.kvt"]));
        const path = app.searchHits[1].path;
        const menu = find("searchMenu");
        const open = () => {
            if (data.key === undefined)
                mouseClick(find("searchHit1"), 20, 10, Qt.RightButton);
            else
                keyClick(data.key, data.key === Qt.Key_F10 ? Qt.ShiftModifier : Qt.NoModifier);
            tryCompare(menu, "opened", true);
        };
        list.forceActiveFocus();
        list.currentIndex = 1;
        open();
        compare(app.fileName, "");
        keyClick(Qt.Key_Return);
        compare(fixture.clipboardText(), path);
        compare(app.status, "Path copied.");
        tryCompare(menu, "visible", false);
        open();
        keyClick(Qt.Key_Down);
        keyClick(Qt.Key_Return);
        compare(fixture.openedUrls().slice(-1), [fixture.urlOf(fixture.tempPath("odd #1 é"))]);
        tryCompare(menu, "visible", false);
        // The keyboard's way to the order.
        open();
        compare([3, 4, 5, 6].map(item => menu.itemAt(item).text),
            ["Sort by file", "Sort by OS", "Sort by year", "Sort by make"]);
        keyClick(Qt.Key_Down);
        keyClick(Qt.Key_Down);
        keyClick(Qt.Key_Return);
        compare(find("headingFile").text, "File ▴");
        tryCompare(menu, "visible", false);
        // Without a row there is none.
        list.currentIndex = -1;
        keyClick(Qt.Key_Menu);
        verify(!menu.visible);
    }

    function test_everyRowOfALongListIsRight() {
        const list = search(folderOf("long", manyFiles(600)));
        compare(list.count, 600);
        for (const row of [0, 50, 599, 300, 1]) {
            list.positionViewAtIndex(row, ListView.Beginning);
            render();
            compare(find("file", find("searchHit" + row)).text, app.searchHits[row].name);
            compare(find("os", find("searchHit" + row)).text, app.searchHits[row].os);
        }
        list.forceActiveFocus(Qt.TabFocusReason);
        keyClick(Qt.Key_End);
        const last = inWindow(find("searchHit599"));
        verify(last.bottom <= inWindow(list).bottom && last.top >= inWindow(list).top);
    }

    function test_rowsAreRecycled() {
        const list = search(folderOf("recycled", manyFiles(400)));
        for (let row = 0; row < 400; row += 5) {
            list.positionViewAtIndex(row, ListView.Beginning);
            render();
        }
        let rows = 0;
        for (let i = 0; i < list.contentItem.children.length; ++i)
            rows += list.contentItem.children[i].objectName.startsWith("searchHit") ? 1 : 0;
        verify(rows > 5 && rows < 120, rows);
    }

    function test_sameListKeepsItsPlace() {
        const folder = folderOf("place", manyFiles(300));
        const list = search(folder);
        list.currentIndex = 200;
        render();
        const place = list.contentY;
        verify(place > 0);
        app.searchRecursive = "0";
        app.scanFolder(folder, true, "", "", "", "");
        tryCompare(app, "searchBusy", false);
        render();
        compare(list.contentY, place);
        compare(list.currentIndex, 200);
        app.scanFolder(folderOf("elsewhere", manyFiles(200)), true, "", "", "", "");
        tryCompare(list, "count", 200);
        render();
        compare(list.contentY, list.originY);
        compare(list.currentIndex, -1);
    }

    function test_columnsLineUp() {
        for (const width of [1440, 1100]) {
            window.width = width;
            tryCompare(window.contentItem, "width", width);
            const list = search(folderOf("columns", ["e38_12654321_2014.kvt"]));
            const row = find("searchHit0");
            const headings = { file: "File", os: "OS", year: "Year", make: "Make" };
            for (const column in headings) {
                const heading = find("heading" + headings[column]);
                compare(heading.text, headings[column]);
                compare(heading.font.capitalization, Font.MixedCase);
                compare(inWindow(heading).x, inWindow(find(column, row)).x, column);
                compare(heading.width, find(column, row).width, column);
            }
            verify(inWindow(find("make", row)).right <= inWindow(list).right - 8);
        }
    }

    function test_pathIsShownOnHover() {
        const name = "<b>" + "long name ".repeat(20) + "&.kvt";
        search(folderOf("hover", [name, "short.kvt"]));
        const tip = find("fullText", find("searchList"));
        for (const shown of [name, "short.kvt"]) {
            mouseMove(rowOf(shown));
            tryVerify(() => tip.visible);
            verify(tip.contentItem.text.startsWith("/"), tip.contentItem.text);
            verify(tip.contentItem.text.endsWith("/hover/" + shown), tip.contentItem.text);
            compare(tip.contentItem.textFormat, Text.PlainText);
            verify(tip.width <= 640);
        }
        mouseMove(find("header"));
        tryVerify(() => !tip.visible);
    }

    function test_hostileNamesAreShownLetterByLetter_data() {
        return [{ tag: "picture", name: "<img src='x'>.kvt" }, { tag: "ampersand", name: "R&D.kvt" },
            { tag: "tag", name: "<b>x.kvt" }, { tag: "override", name: "a\u202Eb.kvt" },
            { tag: "newline", name: "a\nb.kvt" }];
    }

    function test_hostileNamesAreShownLetterByLetter(data) {
        search(folderOf("hostile-" + data.tag, [data.name]));
        const file = find("file", find("searchHit0"));
        compare(file.text, data.name);
        for (const column of ["file", "os", "year", "make"])
            compare(find(column, find("searchHit0")).textFormat, Text.PlainText);
    }

    function test_tabKeyWalksInReadingOrder() {
        app.tab = "search";
        const order = [input("searchFolderField"), find("searchBrowseButton"),
            find("box", find("searchRecursiveBox")), input("searchNameField"), input("searchOsField"),
            input("searchMakeField"), input("searchYearField"), find("searchButton"),
            find("searchClearButton"), find("searchList")];
        order[0].forceActiveFocus(Qt.TabFocusReason);
        for (const item of order) {
            compare(window.activeFocusItem, item, item.objectName);
            verify(item.Accessible.name !== "", item.objectName);
            keyClick(Qt.Key_Tab);
        }
    }

    function test_smallestWindow() {
        window.width = 1100;
        window.height = 720;
        app.tab = "search";
        tryCompare(window.contentItem, "height", 720);
        render();
        for (const name of ["searchButton", "searchCancelButton", "searchClearButton"]) {
            const place = inWindow(find(name));
            verify(place.bottom <= inWindow(find("footer")).top, name);
            verify(!find(name).contentItem.truncated, name);
        }
        app.scanFolder(folderOf("small", ["a.kvt"]), true, "", "", "", "");
        compare(find("searchButton").text, "SEARCHING...");
        verify(!find("searchButton").contentItem.truncated);
        tryCompare(app, "searchBusy", false);
    }
}
