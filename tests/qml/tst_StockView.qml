import QtQuick
import QtTest
import KvtEditor

ViewTest {
    id: root

    name: "StockView"

    readonly property var fieldTitles: ({ Make: "Make", Module: "Module type", Folder: "Path folder",
        Os: "OS / Cal ID", Model: "Model", Keyword: "Keyword" })

    function show(): void {
        app.tab = "stock";
        render();
    }

    // Shows the view with these files found.
    function fill(files: var): var {
        show();
        fixture.answerNext(JSON.stringify({ files: files }));
        app.setStatus("", -1);
        app.stockSearchFields("", "", "", "", "", "", "", "make", "asc");
        tryCompare(app, "status", files.length + " stock file(s).");
        render();
        return find("stockList");
    }

    function manyFiles(count: int, prefix: string): var {
        return Array.from({ length: count }, (_, index) => ({ id: index, filename: prefix + index + ".bin",
            make: "Make " + index, module: "M" + index % 7, year: 2000 + index % 20 }));
    }

    // What the search that this starts sends.
    function searched(start: var): var {
        const before = fixture.requestCount();
        fixture.answerNext("{}");
        app.setStatus("", -1);
        start();
        tryCompare(app, "status", "0 stock file(s).");
        tryVerify(() => fixture.allArrived());
        compare(fixture.requestCount(), before + 1);
        compare(fixture.lastRequestLine(), "POST /api/stock/list.aspx HTTP/1.1");
        return JSON.parse(fixture.lastRequestBody());
    }

    function openList(name: string): var {
        const box = find(name);
        find("stockFilters").reveal(box);
        render();
        mouseClick(box);
        tryVerify(() => box.popup.opened);
        return box;
    }

    function choose(name: string, entry: string): void {
        const box = openList(name);
        const row = box.model.indexOf(entry);
        tryVerify(() => box.popup.contentItem.itemAtIndex(row));
        mouseClick(box.popup.contentItem.itemAtIndex(row));
        tryVerify(() => !box.popup.visible);
    }

    function transparent(row: var): bool {
        return row.color.a === 0;
    }

    function test_fields() {
        show();
        for (const key in fieldTitles) {
            const field = find("stock" + key + "Field");
            compare(field.title, fieldTitles[key]);
            compare(field.text, "");
            verify(!field.locked && field.enabled, key);
        }
        const order = ["stockMakeField", "stockModuleLabel", "stockModuleField", "stockTypeLabel",
            "stockTypeBox", "stockFolderField", "stockOsField", "stockModelField", "stockKeywordField",
            "stockSortBox", "stockOrderBox", "stockSearchButton", "stockCountLine"];
        const tops = order.map(name => inWindow(find(name)).y);
        compare(tops, tops.slice().sort((a, b) => a - b));
    }

    function test_smallLabels_data() {
        return [{ tag: "stockModuleLabel", text: "Module Type" },
            { tag: "stockTypeLabel", text: "File type" }];
    }

    function test_smallLabels(data) {
        show();
        const label = find(data.tag);
        compare(label.text, data.text);
        compare(label.color, VOXTheme.muted);
        compare(label.font.pixelSize, 11);
        compare(label.font.weight, Font.DemiBold);
    }

    function test_dropDowns_data() {
        return [
            { tag: "stockTypeBox", entries: ["Any", "kvt", "ctz", "bin", "ford"], shown: "Any" },
            { tag: "stockSortBox", entries: ["make", "os", "module_type", "filename", "size", "year"],
                shown: "Sort by: make" },
            { tag: "stockOrderBox", entries: ["asc", "desc"], shown: "Order: asc" }
        ];
    }

    function test_dropDowns(data) {
        show();
        const box = find(data.tag);
        compare(box.model, data.entries);
        compare(box.displayText, data.shown);
        compare(box.contentItem.text, data.shown);
        compare(box.height, 40);
        compare(box.background.color, VOXTheme.input);
        compare(box.background.radius, 8);
        compare(box.background.border.color, VOXTheme.border);
        compare(box.contentItem.mapToItem(box, 0, 0).x, 10);
        compare(inWindow(box).x, inWindow(input("stockMakeField")).x);
        compare(box.width, input("stockMakeField").width);
    }

    function test_openListIsDarkAndInSight_data() {
        return [{ tag: "stockTypeBox" }, { tag: "stockSortBox" }, { tag: "stockOrderBox" }];
    }

    function test_openListIsDarkAndInSight(data) {
        window.width = 1100;
        window.height = 720;
        tryCompare(window.contentItem, "height", 720);
        show();
        const box = openList(data.tag);
        compare(box.popup.background.color, VOXTheme.panel);
        const list = box.popup.contentItem;
        compare(list.count, box.count);
        keyClick(Qt.Key_End);
        compare(box.highlightedIndex, box.count - 1);
        render();
        const entry = list.itemAtIndex(box.count - 1);
        compare(entry.background.color, VOXTheme.selection);
        compare(entry.contentItem.text, box.textAt(box.count - 1));
        compare(entry.contentItem.color, VOXTheme.accentText);
        const place = inWindow(list);
        verify(place.top >= 0 && place.bottom <= window.height);
        const field = inWindow(box);
        verify(place.bottom <= field.top || place.top >= field.bottom);
        keyClick(Qt.Key_Escape);
        tryVerify(() => !box.popup.visible);
        compare(box.currentIndex, 0);
    }

    function test_listChosenWithTheKeyboard() {
        show();
        const asked = fixture.requestCount();
        const box = find("stockSortBox");
        box.forceActiveFocus(Qt.TabFocusReason);
        compare(box.background.border.color, VOXTheme.focusRing);
        keyClick(Qt.Key_Down);
        compare(box.displayText, "Sort by: os");
        keyClick(Qt.Key_Space);
        tryVerify(() => box.popup.opened);
        keyClick(Qt.Key_Down);
        keyClick(Qt.Key_Return);
        tryVerify(() => !box.popup.visible);
        compare(box.displayText, "Sort by: module_type");
        verifyNothingSent(asked);
    }

    function test_searchSendsWhatWasTyped() {
        show();
        const typed = { Make: " Chevy ", Module: "E38", Folder: "a/b", Os: "12654321", Model: "Silverado",
            Keyword: "stock  file" };
        for (const key in typed) {
            input("stock" + key + "Field").forceActiveFocus();
            type(typed[key]);
        }
        choose("stockTypeBox", "ctz");
        choose("stockSortBox", "year");
        choose("stockOrderBox", "desc");
        compare(find("stockSortBox").displayText, "Sort by: year");
        compare(find("stockOrderBox").displayText, "Order: desc");
        compare(searched(() => click("stockSearchButton")), { make: " Chevy ", file_type: "ctz",
            folder: "a/b", module_type: "E38", model: "Silverado", os: "12654321", keyword: "stock  file",
            sort: "year", sort_dir: "desc" });
        for (const key in typed)
            compare(find("stock" + key + "Field").text, typed[key]);
    }

    function test_searchWithoutFilters() {
        show();
        compare(searched(() => click("stockSearchButton")), { make: "", file_type: "", folder: "",
            module_type: "", model: "", os: "", keyword: "", sort: "make", sort_dir: "asc" });
    }

    function test_fileType_data() {
        return [{ tag: "kvt" }, { tag: "ctz" }, { tag: "bin" }, { tag: "ford" }, { tag: "Any", sent: "" }];
    }

    function test_fileType(data) {
        show();
        find("stockTypeBox").currentIndex = 1;
        choose("stockTypeBox", data.tag);
        compare(searched(() => click("stockSearchButton")).file_type, data.sent ?? data.tag);
    }

    function test_sortKey_data() {
        return ["make", "os", "module_type", "filename", "size", "year"].map(tag => ({ tag: tag }));
    }

    function test_sortKey(data) {
        show();
        choose("stockSortBox", data.tag);
        compare(searched(() => click("stockSearchButton")).sort, data.tag);
    }

    function test_returnInAFieldSearches_data() {
        return [{ tag: "Make", key: "make" }, { tag: "Module", key: "module_type" },
            { tag: "Folder", key: "folder" }, { tag: "Os", key: "os" }, { tag: "Model", key: "model" },
            { tag: "Keyword", key: "keyword" }];
    }

    function test_returnInAFieldSearches(data) {
        show();
        input("stock" + data.tag + "Field").forceActiveFocus();
        type("x1");
        for (const key of [Qt.Key_Return, Qt.Key_Enter])
            compare(searched(() => keyClick(key))[data.key], "x1");
    }

    function test_heldReturnSearchesOnce_data() {
        return test_returnInAFieldSearches_data();
    }

    function test_heldReturnSearchesOnce(data) {
        show();
        const before = fixture.requestCount();
        input("stock" + data.tag + "Field").forceActiveFocus();
        hold(Qt.Key_Return);
        hold(Qt.Key_Enter);
        verifySent(before, 2);
    }

    function test_countOfRows() {
        const line = find("stockCountLine");
        compare(line.text, "0 match(es) found.");
        fill(manyFiles(3, "a"));
        compare(line.text, "3 match(es) found.");
        fill(manyFiles(1, "a"));
        compare(line.text, "1 match(es) found.");
        click("stockClearButton");
        compare(line.text, "0 match(es) found.");
    }

    function test_withoutRows() {
        show();
        const line = find("stockEmptyLine");
        verify(line.visible);
        compare(line.text, "No results.");
        compare(line.color, VOXTheme.muted);
        fill(manyFiles(1, "a"));
        verify(!line.visible);
        fill([]);
        verify(line.visible);
    }

    function test_rowShowsItsFile_data() {
        return [
            { tag: "make", file: { filename: "a.kvt", make: "Ford", year: "2015", module: "PCM" },
                shown: ["a.kvt", "Ford", "PCM"] },
            { tag: "year-instead", file: { name: "b.kvt", year: 2015, module_type: "TCM" },
                shown: ["b.kvt", "2015", "TCM"] },
            { tag: "neither", file: { filename: "c.kvt", model: "F-150", os: "12" },
                shown: ["c.kvt", "", ""] }
        ];
    }

    function test_rowShowsItsFile(data) {
        fill([data.file]);
        const row = find("stockRow0");
        compare(["file", "make", "module"].map(column => find(column, row).text), data.shown);
        compare(find("file", row).elide, Text.ElideMiddle);
        compare(find("make", row).color, VOXTheme.muted);
        compare(find("module", row).color, VOXTheme.muted);
        verify(row.Accessible.name.startsWith(data.shown[0]));
    }

    function test_orderIsThatOfTheService() {
        const names = ["z.kvt", "a.kvt", "m.bin"];
        fill(names.map(name => ({ filename: name })));
        names.forEach((name, index) => compare(find("file", find("stockRow" + index)).text, name));
    }

    function test_columnsLineUp_data() {
        return [{ tag: "1440" }, { tag: "1100" }];
    }

    function test_columnsLineUp(data) {
        window.width = Number(data.tag);
        tryCompare(window.contentItem, "width", window.width);
        const list = fill(manyFiles(2, "a"));
        const headings = { file: "Filename", make: "Make", module: "Module" };
        for (const column in headings) {
            const heading = find("stockHeading" + headings[column]);
            const cell = find(column, find("stockRow1"));
            compare(heading.text, headings[column]);
            compare(heading.font.capitalization, Font.MixedCase);
            compare(heading.font.weight, Font.DemiBold);
            compare(heading.color, VOXTheme.orange);
            compare(inWindow(heading).x, inWindow(cell).x, column);
            compare(heading.width, cell.width, column);
            verify(column === "file" || cell.width === 90, column);
        }
        verify(find("file", find("stockRow1")).width > 200);
        const right = inWindow(find("module", find("stockRow1"))).right;
        fuzzyCompare(right, inWindow(list).right - 24, 1);
    }

    function test_clickSelects() {
        fill(manyFiles(3, "a"));
        const results = find("stockResults");
        compare(results.selected, -1);
        const rows = [0, 1, 2].map(index => find("stockRow" + index));
        verify(rows.every(transparent));
        mouseClick(rows[1]);
        compare(results.selected, 1);
        compare(rows[1].color, VOXTheme.accent(0.18));
        compare(rows[1].radius, 6);
        verify(transparent(rows[0]) && transparent(rows[2]));
        verify(rows[1].Accessible.selected && !rows[0].Accessible.selected);
        mouseClick(rows[2]);
        compare(results.selected, 2);
        compare(rows[2].color, VOXTheme.accent(0.18));
        verify(transparent(rows[1]));
    }

    function test_pointerChangesNoGround() {
        fill(manyFiles(3, "a"));
        mouseClick(find("stockRow1"));
        for (const index of [0, 1]) {
            const row = find("stockRow" + index);
            mouseMove(row);
            tryCompare(row, "hovered", true);
            compare(row.color.a, index === 1 ? VOXTheme.accent(0.18).a : 0);
        }
    }

    function test_selectionOutlivesANewSearch() {
        const list = fill(manyFiles(5, "a"));
        click("stockRow3");
        fill(manyFiles(6, "b"));
        compare(find("stockResults").selected, 3);
        compare(find("stockRow3").color, VOXTheme.accent(0.18));
        list.forceActiveFocus(Qt.TabFocusReason);
        keyClick(Qt.Key_Down);
        compare(find("stockResults").selected, 4);
        verify(transparent(find("stockRow3")));
    }

    function test_selectionBeyondTheRows() {
        fill(manyFiles(5, "a"));
        click("stockRow4");
        fill(manyFiles(2, "b"));
        compare(find("stockResults").selected, 4);
        verify([0, 1].every(index => transparent(find("stockRow" + index))));
        const asked = fixture.requestCount();
        const status = app.status;
        click("stockDownloadButton");
        compare(app.status, status);
        verifyNothingSent(asked);
        fill(manyFiles(5, "c"));
        compare(find("stockResults").selected, 4);
        compare(find("stockRow4").color, VOXTheme.accent(0.18));
    }

    function test_newRowsSelectNothing() {
        fill(manyFiles(3, "a"));
        fill(manyFiles(4, "b"));
        compare(find("stockResults").selected, -1);
        compare(find("stockList").currentIndex, -1);
    }

    function test_clear() {
        const list = fill(manyFiles(5, "a"));
        click("stockRow3");
        const asked = fixture.requestCount();
        const status = app.status;
        input("stockMakeField").text = "Ford";
        click("stockClearButton");
        compare(list.count, 0);
        compare(find("stockResults").selected, -1);
        compare(app.status, status);
        verifyNothingSent(asked);
        compare(find("stockMakeField").text, "Ford");
        fill(manyFiles(5, "b"));
        verify([0, 1, 2, 3, 4].every(index => transparent(find("stockRow" + index))));
    }

    function test_clearForgetsASelectionBeyondTheRows() {
        fill(manyFiles(5, "a"));
        click("stockRow4");
        fill([]);
        click("stockClearButton");
        compare(find("stockResults").selected, -1);
    }

    function test_downloadNeedsASelection() {
        fill(manyFiles(2, "a"));
        const asked = fixture.requestCount();
        compare(find("stockDownloadButton").text, "DOWNLOAD & OPEN");
        verify(find("stockDownloadButton").orange);
        click("stockDownloadButton");
        compare(app.status, "Select a stock file first.");
        compare(app.statusOK, 0);
        verifyNothingSent(asked);
    }

    function test_downloadAsksForTheSelectedFile() {
        fill([{ id: "first", filename: "first.bin" }, { id: "42", filename: "second.bin" }]);
        click("stockRow1");
        fixture.answerNext("bytes of the file");
        click("stockDownloadButton");
        tryCompare(app, "status", "Downloaded second.bin");
        compare(fixture.lastRequestLine(), "POST /api/stock/download.aspx HTTP/1.1");
        const body = fixture.lastRequestBody();
        verify(/name="?id"?\r\n[^]*\r\n42\r\n/.test(body), body);
        verify(!body.includes("first"));
        compare(find("stockResults").selected, 1);
    }

    // The letter after the ampersand is not a mnemonic of the button.
    function test_ampersandMakesNoShortcut() {
        fill(manyFiles(2, "a"));
        click("stockRow1");
        const before = fixture.requestCount();
        keyClick(Qt.Key_Space, Qt.AltModifier);
        verifyNothingSent(before);
    }

    function test_downloadedTuneIsOpened() {
        fill([{ id: "7", filename: "Stock.KVT" }]);
        click("stockRow0");
        fixture.answerNext("bytes of the tune");
        click("stockDownloadButton");
        tryCompare(app, "tab", "main");
        compare(app.fileName, "Stock.KVT");
    }

    function test_keyboardSelectsAndDownloads() {
        const list = fill(manyFiles(3, "a"));
        const results = find("stockResults");
        list.forceActiveFocus(Qt.TabFocusReason);
        keyClick(Qt.Key_Return);
        compare(app.status, "Select a stock file first.");
        const steps = [[Qt.Key_Down, 0], [Qt.Key_Down, 1], [Qt.Key_End, 2], [Qt.Key_Down, 2],
            [Qt.Key_Home, 0], [Qt.Key_Up, 0], [Qt.Key_PageDown, 2], [Qt.Key_PageUp, 0], [Qt.Key_Down, 1]];
        for (const [key, expected] of steps) {
            keyClick(key);
            compare(results.selected, expected);
            compare(list.currentIndex, expected);
        }
        compare(find("stockRow1").color, VOXTheme.accent(0.18));
        verify(transparent(find("stockRow0")) && transparent(find("stockRow2")));
        click("stockRow0");
        keyClick(Qt.Key_Down);
        compare(results.selected, 1);
        fixture.answerNext("bytes");
        keyClick(Qt.Key_Return);
        tryCompare(app, "status", "Downloaded a1.bin");
    }

    function test_heldReturnDownloadsOnce() {
        const list = fill(manyFiles(3, "a"));
        list.forceActiveFocus(Qt.TabFocusReason);
        keyClick(Qt.Key_Down);
        const before = fixture.requestCount();
        hold(Qt.Key_Return);
        verifySent(before, 1);
    }

    function test_doubleClickDownloadsOnce() {
        fill(manyFiles(3, "a"));
        click("stockRow1");
        const before = fixture.requestCount();
        mouseDoubleClickSequence(find("stockDownloadButton"));
        verifySent(before, 1);
    }

    function test_newRowsStartAtTheTop() {
        const list = fill(manyFiles(300, "a"));
        list.forceActiveFocus(Qt.TabFocusReason);
        keyClick(Qt.Key_End);
        render();
        verify(list.contentY > 0);
        fill(manyFiles(400, "b"));
        compare(list.contentY, list.originY);
        compare(find("stockResults").selected, 299);
        compare(find("file", find("stockRow0")).text, "b0.bin");
        // The selected row comes into sight with the first key.
        keyClick(Qt.Key_Down);
        render();
        compare(find("stockResults").selected, 300);
        const row = inWindow(find("stockRow300"));
        verify(row.top >= inWindow(list).top && row.bottom <= inWindow(list).bottom);
    }

    function test_fiveThousandRows() {
        const list = fill(manyFiles(5000, "file"));
        compare(list.count, 5000);
        compare(find("stockCountLine").text, "5000 match(es) found.");
        for (let row = 0; row < 5000; row += 50) {
            list.positionViewAtIndex(row, ListView.Beginning);
            render();
        }
        for (const row of [0, 50, 4999, 2500, 1]) {
            list.positionViewAtIndex(row, ListView.Contain);
            render();
            compare(find("file", find("stockRow" + row)).text, "file" + row + ".bin");
            compare(find("make", find("stockRow" + row)).text, "Make " + row);
        }
        let rows = 0;
        for (let i = 0; i < list.contentItem.children.length; ++i)
            rows += list.contentItem.children[i].objectName.startsWith("stockRow") ? 1 : 0;
        verify(rows > 5 && rows < 120, rows);
        list.forceActiveFocus(Qt.TabFocusReason);
        keyClick(Qt.Key_End);
        compare(find("stockResults").selected, 4999);
        const last = inWindow(find("stockRow4999"));
        verify(last.top >= inWindow(list).top && last.bottom <= inWindow(list).bottom);
    }

    function test_selectionStaysWithItsRowWhileScrolling() {
        const list = fill(manyFiles(300, "a"));
        click("stockRow2");
        list.positionViewAtIndex(150, ListView.Beginning);
        render();
        verify(transparent(find("stockRow152")));
        list.positionViewAtBeginning();
        render();
        compare(find("stockRow2").color, VOXTheme.accent(0.18));
        verify(transparent(find("stockRow3")));
    }

    function test_shortenedTextsAreShownWholeOnHover() {
        const name = "<b>" + "long name ".repeat(20) + "&.kvt";
        const make = "A maker with a very long name & more";
        const list = fill([{ filename: name, make: make, module: "PCM" }, { filename: "short.kvt" }]);
        const row = find("stockRow0");
        verify(find("file", row).truncated && find("make", row).truncated);
        const tip = find("fullText", list);
        mouseMove(row);
        tryVerify(() => tip.visible);
        compare(tip.contentItem.text, name + "\n" + make);
        compare(tip.contentItem.textFormat, Text.PlainText);
        mouseMove(find("stockRow1"));
        tryVerify(() => !tip.visible);
    }

    function test_tipNamesTheFileThatWillBeWritten_data() {
        return [
            { tag: "start-up-file", filename: "../../x/.profile", saved: "_profile" },
            { tag: "desktop-entry", filename: "tune.desktop", saved: "tune.desktop.bin" },
            { tag: "folder", filename: "2015/truck.kvt", saved: "truck.kvt" },
            { tag: "none", filename: "", saved: "stock.bin" }
        ];
    }

    function test_tipNamesTheFileThatWillBeWritten(data) {
        const list = fill([{ id: "1", filename: data.filename, make: "GMC", module: "PCM" }]);
        const row = find("stockRow0");
        compare(find("file", row).text, data.filename);
        const tip = find("fullText", list);
        mouseMove(row);
        tryVerify(() => tip.visible);
        compare(tip.contentItem.text, data.saved);
    }

    function test_hostileTexts_data() {
        return [
            { tag: "picture", text: "<img src='" + fixture.address("picture.png") + "'>" },
            { tag: "tag", text: "<b>bold</b>" },
            { tag: "ampersand", text: "R&D" },
            { tag: "override", text: "a\u202Eb" },
            { tag: "nul", text: "a\u0000b" },
            { tag: "newline", text: "a\nb", shown: "a b" },
            { tag: "long", text: "x".repeat(500000) + "y".repeat(500000),
                shown: "x".repeat(200) + "…" + "y".repeat(200) }
        ];
    }

    function test_hostileTexts(data) {
        const list = fill([{ id: data.text, filename: data.text, make: data.text, module: data.text }]);
        const row = find("stockRow0");
        for (const column of ["file", "make", "module"]) {
            const cell = find(column, row);
            compare(cell.text, data.shown ?? data.text);
            compare(cell.textFormat, Text.PlainText);
            verify(cell.contentHeight <= row.height);
        }
        mouseClick(row);
        mouseMove(row, 20, 20);
        if (row.shortened) {
            const tip = find("fullText", list);
            tryVerify(() => tip.visible);
            verify(tip.height < window.height);
        }
        verifyNothingFetched();
    }

    function test_tabKeyWalksInReadingOrder() {
        show();
        const order = [input("stockMakeField"), input("stockModuleField"), find("stockTypeBox"),
            input("stockFolderField"), input("stockOsField"), input("stockModelField"),
            input("stockKeywordField"), find("stockSortBox"), find("stockOrderBox"),
            find("stockSearchButton"), find("stockClearButton"), find("stockList"),
            find("stockDownloadButton")];
        order[0].forceActiveFocus(Qt.TabFocusReason);
        for (const item of order) {
            compare(window.activeFocusItem, item, item.objectName);
            verify(item.Accessible.name !== "", item.objectName);
            keyClick(Qt.Key_Tab);
        }
    }

    function test_everythingIsInReach_data() {
        return [{ tag: "smallest", width: 1100, height: 720 }, { tag: "usual", width: 1440, height: 900 }];
    }

    function test_everythingIsInReach(data) {
        window.width = data.width;
        window.height = data.height;
        tryCompare(window.contentItem, "height", data.height);
        fill(manyFiles(60, "a"));
        const end = inWindow(find("footer")).top - 20;
        for (const name of ["stockSearchButton", "stockClearButton", "stockCountLine", "stockDownloadButton"])
            verify(inWindow(find(name)).bottom <= end, name);
        const scroll = find("scrollView", find("stockFilters"));
        for (const item of [input("stockMakeField"), find("stockTypeBox"), input("stockKeywordField"),
                find("stockOrderBox")]) {
            item.forceActiveFocus(Qt.TabFocusReason);
            render();
            verify(inWindow(item).top >= inWindow(scroll).top, item);
            verify(inWindow(item).bottom <= inWindow(scroll).bottom, item);
        }
    }
}
