import QtQuick
import QtTest
import KvtEditor

ViewTest {
    id: root

    name: "PatcherView"

    function show(): void {
        app.tab = "patcher";
        render();
    }

    // Has the service offer these patches and waits until the list shows them.
    function load(patches: var): var {
        show();
        fixture.answerNext(JSON.stringify({ patches: patches }));
        app.setStatus("");
        app.loadPatches("126");
        tryCompare(app, "status", patches.length + " patch(es) for 126.");
        render();
        return find("patcherList");
    }

    function patches(count: int): var {
        return Array.from({ length: count }, (_, index) => ({
            id: 1000 + index, variant: "Variant " + index, description: "About " + index,
            credits_cost: index % 9
        }));
    }

    function rowAt(index: int): var {
        find("patcherList").positionViewAtIndex(index, ListView.Contain);
        render();
        return find("patch" + index);
    }

    // Does something that sends one request, and waits for it.
    function sent(action: var): var {
        const before = fixture.requestCount();
        action();
        tryVerify(() => fixture.requestCount() > before && fixture.allArrived());
        compare(fixture.requestCount(), before + 1);
        return {
            path: fixture.lastRequestLine().split(" ")[1].split("/api/")[1],
            fields: JSON.parse(fixture.lastRequestBody())
        };
    }

    function pressIn(field: string, key: int): void {
        input(field).forceActiveFocus();
        keyClick(key);
    }

    function openModules(os: string): void {
        fixture.applyInfo({ modules: [{ title: "ECM", mainOs: os }, { title: "TCM", mainOs: "2" }] });
    }

    function choose(name: string): void {
        const dialog = find("patcherDialog");
        tryVerify(() => dialog.visible);
        dialog.close();
        dialog.selectedFile = fixture.urlOf(fixture.tempPath(name));
        dialog.accepted();
    }

    function test_cardsStandSideBySide() {
        show();
        const left = inWindow(find("patcherWorkspace"));
        const right = inWindow(find("patcherListCard"));
        const view = inWindow(find("patcherView"));
        compare(find("patcherWorkspace").title, "Workspace");
        compare(find("patcherListCard").title, "Identifiers");
        compare(left.x - view.x, 20);
        compare(left.y - view.y, 20);
        compare(view.bottom - left.bottom, 20);
        compare(right.x - left.right, 16);
        compare(view.right - right.right, 20);
        compare(right.y, left.y);
        compare(right.bottom, left.bottom);
    }

    function test_texts() {
        show();
        const hint = find("patcherHint");
        compare(hint.text,
            "Credit-based BIN patches use the XDF store session. Complete XDF MAKER login first.");
        compare(hint.color, VOXTheme.muted);
        verify(hint.lineCount > 1);
        verify(!hint.truncated);
        compare(find("patcherCalIdField").title, "Cal / OS ID (module 1)");
        verify(!find("patcherCalIdField").locked);
        compare(find("patcherCalIdField").text, "");
        compare(find("patcherLoadButton").text, "Load patches");
        compare(find("patcherLoadButton").orange, true);
        compare(find("patcherOpenXdfButton").text, "Open XDF MAKER");
        compare(find("patcherOpenXdfButton").orange, false);
        compare(find("patcherEmptyLine").text, "Patches for the current OS appear here.");
        compare(find("patcherEmptyLine").color, VOXTheme.muted);
        verify(find("patcherEmptyLine").visible);
    }

    function test_fieldFollowsTheFileUntilEdited() {
        show();
        const field = input("patcherCalIdField");
        openModules("111");
        compare(field.text, "111");
        openModules("222");
        compare(field.text, "222");
        field.forceActiveFocus();
        field.cursorPosition = 1;
        type("ab");
        compare(field.text, "2ab22");
        compare(field.cursorPosition, 3);
        openModules("333");
        compare(field.text, "2ab22");
        compare(app.moduleOneOS, "333");
    }

    function test_emptiedFieldStaysEmpty() {
        show();
        openModules("111");
        input("patcherCalIdField").forceActiveFocus();
        keyClick(Qt.Key_A, Qt.ControlModifier);
        keyClick(Qt.Key_Delete);
        compare(find("patcherCalIdField").text, "");
        compare(sent(() => click("patcherLoadButton")).fields.cal_id, "111");
    }

    function test_loadIsSentBy_data() {
        return [
            { tag: "button", act: () => click("patcherLoadButton") },
            { tag: "return", act: () => pressIn("patcherCalIdField", Qt.Key_Return) },
            { tag: "enter", act: () => pressIn("patcherCalIdField", Qt.Key_Enter) }
        ];
    }

    function test_loadIsSentBy(data) {
        show();
        openModules("111");
        input("patcherCalIdField").forceActiveFocus();
        keyClick(Qt.Key_End);
        type(" x");
        const request = sent(data.act);
        compare(request.path, "patches/patches.aspx");
        compare(request.fields, { session_token: "", cal_id: "111 x" });
        compare(app.status, "");
    }

    function test_heldReturnLoadsOnce_data() {
        return [{ tag: "return", key: Qt.Key_Return }, { tag: "enter", key: Qt.Key_Enter }];
    }

    function test_heldReturnLoadsOnce(data) {
        show();
        const before = fixture.requestCount();
        input("patcherCalIdField").forceActiveFocus();
        hold(data.key);
        verifySent(before, 1);
    }

    function test_openXdfMaker() {
        show();
        click("patcherOpenXdfButton");
        compare(app.tab, "xdf");
        verify(find("xdfView").visible);
        verify(!find("patcherView").visible);
    }

    function test_rowShowsItsPatch() {
        load([{ id: 5, variant: "No torque limit", description: "Lifts it.", credits_cost: "10" }]);
        const row = find("patch0");
        compare(find("title", row).text, "No torque limit");
        const about = find("about", row);
        compare(about.text, "Lifts it.  •  10 credits");
        compare(about.color, VOXTheme.muted);
        compare(about.font.pixelSize, 12);
        compare(about.wrapMode, Text.Wrap);
        verify(inWindow(about).y >= inWindow(find("title", row)).bottom);
        const button = find("action", row);
        compare(button.text, "Apply to BIN");
        compare(button.width, 130);
        verify(button.enabled);
        verify(inWindow(button).x >= inWindow(about).right);
        compare(row.Accessible.role, Accessible.ListItem);
        compare(row.Accessible.name, "No torque limit, Lifts it.  •  10 credits");
        compare(button.Accessible.name, "Apply to BIN No torque limit");
        compare(find("patcherList").Accessible.name, "Patches");
        verify(!find("patcherEmptyLine").visible);
    }

    function test_descriptionWraps() {
        load([{ variant: "A", description: "some words ".repeat(30), credits_cost: 1 },
            { variant: "B", description: "short", credits_cost: 1 }]);
        const row = find("patch0");
        const about = find("about", row);
        verify(about.lineCount > 1);
        verify(!about.truncated);
        verify(about.text.endsWith("  •  1 credits"));
        verify(row.height > find("patch1").height);
        verify(inWindow(about).bottom <= inWindow(row).bottom - 8);
        verify(inWindow(find("title", row)).y >= inWindow(row).y + 8);
        verify(inWindow(about).right <= inWindow(find("action", row)).x);
    }

    function test_priceIsShownBehindEveryDescription_data() {
        return [{ tag: "1000-characters", text: "some words ".repeat(91).slice(0, 1000) },
            { tag: "1000-characters-unbroken", text: "x".repeat(1000) },
            { tag: "many-lines", text: "A line.\n".repeat(60) },
            { tag: "too-long", text: "some words ".repeat(1000) },
            { tag: "too-long-in-lines", text: "A line.\r\n".repeat(1000) }];
    }

    function test_priceIsShownBehindEveryDescription(data) {
        window.width = 1100;
        tryCompare(window.contentItem, "width", 1100);
        load([{ variant: "A", description: data.text, credits_cost: 12 }]);
        const row = find("patch0");
        const about = find("about", row);
        verify(about.text.endsWith((data.text.length > 2000 ? "…" : "") + "  •  12 credits"));
        verify(!about.truncated);
        fuzzyCompare(about.height, about.contentHeight, 1);
        verify(inWindow(about).bottom <= inWindow(row).bottom - 8);
        verify(inWindow(about).right <= inWindow(find("action", row)).x);
    }

    function test_dialog() {
        load(patches(2));
        const asked = fixture.requestCount();
        fixture.openFile("tune.kvt", 32);
        tryVerify(() => fixture.requestCount() === asked + 1);
        show();
        const dialog = find("patcherDialog");
        compare(dialog.nameFilters, ["BIN (*.bin)"]);
        compare(find("patcherView").pendingIndex, -1);
        click("action");
        tryVerify(() => dialog.visible);
        compare(find("patcherView").pendingIndex, 0);
        compare(dialog.currentFolder, fixture.urlOf(fixture.tempPath("").replace(/\/$/, "")));
        const before = fixture.requestCount();
        dialog.reject();
        tryVerify(() => !dialog.visible);
        verifyNothingSent(before);
    }

    // The number of a patch would mean another one in the new list.
    function test_newListEndsThePicking_data() {
        return [{ tag: "other", answered: patches(5) }, { tag: "shorter", answered: patches(1) },
            { tag: "none", answered: [] }];
    }

    function test_newListEndsThePicking(data) {
        fixture.writeFile("late.bin", 3);
        load(patches(3));
        const dialog = find("patcherDialog");
        mouseClick(find("action", find("patch2")));
        tryVerify(() => dialog.visible);
        load(data.answered);
        tryVerify(() => !dialog.visible);
        compare(find("patcherView").pendingIndex, -1);
        const before = fixture.requestCount();
        dialog.selectedFile = fixture.urlOf(fixture.tempPath("late.bin"));
        dialog.accepted();
        verifyNothingSent(before);
    }

    // Such as the second answer to a list that was asked for twice.
    function test_sameListLeavesThePicking() {
        fixture.writeFile("late.bin", 3);
        load(patches(3));
        mouseClick(find("action", find("patch2")));
        tryVerify(() => find("patcherDialog").visible);
        load(patches(3));
        verify(find("patcherDialog").visible);
        compare(sent(() => choose("late.bin")).fields.patch_id, "1002");
    }

    function test_chosenFileIsSentWithItsPatch_data() {
        return [{ tag: "plain", file: "a.bin", index: 0 },
            { tag: "blank-hash-percent", file: "b #1 100%.bin", index: 1 },
            { tag: "looks-encoded", file: "c%20d.bin", index: 39 }];
    }

    function test_chosenFileIsSentWithItsPatch(data) {
        fixture.writeFile(data.file, 3);
        load(patches(40));
        mouseClick(find("action", rowAt(data.index)));
        const request = sent(() => choose(data.file));
        compare(request.path, "patches/patch_process.aspx");
        compare(request.fields, { session_token: "", patch_id: String(1000 + data.index), file_data: "AAAA",
            cal_id: "126" });
        compare(find("patcherList").currentIndex, data.index);
    }

    function test_patchedFileIsReported() {
        fixture.writeFile("stock.bin", 3);
        load(patches(1));
        click("action");
        fixture.answerNext(JSON.stringify({ status: "ok", message: "R&D <b>done</b>" }));
        choose("stock.bin");
        tryCompare(app, "status", "Patch processed: R&D <b>done</b>");
        compare(find("statusLine").text, app.status);
    }

    function test_returnPicksForTheHighlightedRow() {
        fixture.writeFile("keys.bin", 3);
        const list = load(patches(5));
        const dialog = find("patcherDialog");
        list.forceActiveFocus(Qt.TabFocusReason);
        keyClick(Qt.Key_Return);
        compare(find("patcherView").pendingIndex, -1);
        compare(dialog.visible, false);
        keyClick(Qt.Key_Down);
        keyClick(Qt.Key_Down);
        keyClick(Qt.Key_Return);
        compare(sent(() => choose("keys.bin")).fields.patch_id, "1001");
    }

    function test_heldReturnPicksOnce() {
        fixture.writeFile("held.bin", 3);
        const list = load(patches(5));
        list.forceActiveFocus(Qt.TabFocusReason);
        keyClick(Qt.Key_Down);
        const before = fixture.requestCount();
        hold(Qt.Key_Return);
        compare(find("patcherView").pendingIndex, 0);
        choose("held.bin");
        verifySent(before, 1);
    }

    function test_clickBesideTheButtonOnlySelects() {
        load(patches(3));
        const before = fixture.requestCount();
        mouseClick(find("patch1"), 20, 20);
        compare(find("patcherList").currentIndex, 1);
        compare(find("patcherView").pendingIndex, -1);
        compare(find("patcherDialog").visible, false);
        verifyNothingSent(before);
    }

    function test_longListIsRecycled() {
        const list = load(patches(5000));
        compare(list.count, 5000);
        for (const index of [0, 77, 4999, 2500, 1]) {
            const row = rowAt(index);
            compare(find("title", row).text, "Variant " + index);
            compare(find("about", row).text, "About " + index + "  •  " + index % 9 + " credits");
        }
        let rows = 0;
        for (let i = 0; i < list.contentItem.children.length; ++i)
            rows += /^patch\d/.test(list.contentItem.children[i].objectName) ? 1 : 0;
        verify(rows > 5 && rows < 120, rows);
    }

    function test_sameListKeepsItsPlace() {
        const list = load(patches(300));
        list.currentIndex = 200;
        render();
        const place = list.contentY;
        const row = find("patch200");
        verify(place > 0);
        load(patches(300));
        compare(list.contentY, place);
        compare(list.currentIndex, 200);
        compare(find("patch200"), row);
        load(patches(20));
        compare(list.contentY, list.originY);
        compare(list.currentIndex, -1);
    }

    function test_hostilePatches_data() {
        return [{ tag: "picture", text: "<img src='" + fixture.address("picture.png") + "'>" },
            { tag: "tag", text: "<b>bold</b>" }, { tag: "ampersand", text: "R&D" },
            { tag: "override", text: "a\u202Eb" }, { tag: "nul", text: "a\u0000b" },
            { tag: "newlines", text: "a\n".repeat(300), shown: "a ".repeat(300) },
            { tag: "long", text: "x".repeat(1000000), shown: "x".repeat(2000) + "…" }];
    }

    function test_hostilePatches(data) {
        load([{ variant: data.text, description: data.text, credits_cost: 1 }]);
        const row = find("patch0");
        const about = find("about", row);
        compare(find("title", row).textFormat, Text.PlainText);
        compare(about.textFormat, Text.PlainText);
        compare(find("title", row).text, data.shown ?? data.text);
        compare(about.text, (data.shown ?? data.text) + "  •  1 credits");
        verify(!about.truncated);
        compare(find("title", row).lineCount, 1);
        mouseMove(row, 20, 20);
        tryVerify(() => row.hovered);
        verifyNothingFetched();
        verify(inWindow(about).bottom <= inWindow(row).bottom - 8);
    }

    function test_longTextsAreShownWholeOnHover() {
        const title = "<b>" + "long words ".repeat(60);
        load([{ variant: title, description: "D", credits_cost: 2 },
            { variant: "W", description: "short", credits_cost: 1 }]);
        const tip = find("fullText", find("patcherList"));
        mouseMove(find("patch0"), 20, 20);
        tryVerify(() => tip.visible);
        compare(tip.contentItem.text, title + "\nD  •  2 credits");
        compare(tip.contentItem.textFormat, Text.PlainText);
        mouseMove(find("patch1"), 20, 20);
        tryVerify(() => !tip.visible);
    }

    function test_tabKeyWalksInReadingOrder() {
        load(patches(3));
        const order = [input("patcherCalIdField"), find("patcherLoadButton"), find("patcherOpenXdfButton"),
            find("patcherList")];
        order[0].forceActiveFocus(Qt.TabFocusReason);
        for (const item of order) {
            verify(item.activeFocus, item.objectName);
            verify(item.Accessible.name !== "", item.objectName);
            keyClick(Qt.Key_Tab);
        }
        compare(find("patcherList").activeFocus, false);
    }

    function test_smallestWindow() {
        window.width = 1100;
        window.height = 720;
        tryCompare(window.contentItem, "height", 720);
        load(patches(20));
        for (const name of ["patcherLoadButton", "patcherOpenXdfButton"]) {
            verify(!find(name).contentItem.truncated, name);
            verify(inWindow(find(name)).bottom <= inWindow(find("footer")).top, name);
        }
        verify(!find("action", find("patch0")).contentItem.truncated);
        verify(inWindow(find("patcherListCard")).right <= window.width - 20);
    }
}
