import QtQuick
import QtTest
import KvtEditor

ViewTest {
    id: root

    name: "SegmentsView"

    function show(): void {
        app.tab = "segments";
        render();
    }

    function inView(name: string): var {
        return find(name, find("segmentsView"));
    }

    function pick(button: string, name: string): void {
        const dialog = find("segmentFileDialog");
        click(button);
        tryVerify(() => dialog.visible);
        dialog.close();
        dialog.selectedFile = fixture.urlOf(fixture.tempPath(name));
        dialog.accepted();
    }

    // Both files picked, and the list as the service answers it.
    function preview(candidates: var): var {
        fixture.writeFile("base.kvt", 24);
        fixture.writeFile("donor.kvt", 40);
        app.pickSegmentFile("base", fixture.tempPath("base.kvt"));
        app.pickSegmentFile("donor", fixture.tempPath("donor.kvt"));
        show();
        return previewAgain(candidates);
    }

    function previewAgain(candidates: var): var {
        fixture.answerNext(JSON.stringify({ status: "ok", candidates: candidates }));
        click("segmentSwapButton");
        tryCompare(app, "status", candidates.length + " swap candidate(s).");
        tryCompare(find("swapList"), "count", candidates.length);
        render();
        return find("swapList");
    }

    function numbered(count: int): var {
        return Array.from({ length: count },
            (_, index) => ({ targetIndex: index, donorIndex: index + 1, label: "Segment " + index }));
    }

    function rowOf(index: int): var {
        return find("swapCandidate" + index);
    }

    function boxOf(index: int): var {
        return find("box", rowOf(index));
    }

    function labelOf(index: int): var {
        return find("label", rowOf(index));
    }

    function selection(): var {
        return app.swapCandidates.map(candidate => candidate.selected);
    }

    // The text of a part of the last request.
    function part(name: string): var {
        const body = fixture.lastRequestBody();
        const boundary = body.split("\r\n", 1)[0];
        const found = body.split(boundary).find(text => text.includes('name="' + name + '"'));
        return found === undefined ? null : found.slice(found.indexOf("\r\n\r\n") + 4, -2);
    }

    function requestOf(action: var): void {
        const asked = fixture.requestCount();
        action();
        tryVerify(() => fixture.requestCount() > asked && fixture.allArrived());
        compare(fixture.requestCount(), asked + 1);
    }

    function madeRows(list: var): int {
        let rows = 0;
        for (let i = 0; i < list.contentItem.children.length; ++i)
            rows += list.contentItem.children[i].objectName.startsWith("swapCandidate") ? 1 : 0;
        return rows;
    }

    function test_atFirst() {
        show();
        compare(inView("segmentsNote").text, "If you do not pick a base file, the KVT open on MAIN is used.");
        compare(inView("segmentsNote").color, VOXTheme.muted);
        compare(inView("segmentsNote").wrapMode, Text.Wrap);
        const texts = { pickBaseButton: "Pick base .kvt", pickDonorButton: "Pick donor .kvt",
            segmentSwapButton: "SEGMENT SWAP", applySelectedButton: "Apply selected" };
        for (const name in texts) {
            compare(inView(name).text, texts[name]);
            compare(inView(name).orange, !name.startsWith("pick"), name);
        }
        compare(inView("selectAllBox").text, "Select all");
        compare(inView("selectAllBox").checked, true);
        compare(find("swapList").count, 0);
        compare(find("segmentFileDialog").nameFilters, ["KVT (*.kvt)"]);
    }

    function test_fieldsShowTheFile() {
        fixture.openFile("truck.kvt", 100);
        fixture.applyInfo({ created: "2024-03-05 14:07", softwareVersion: "4.0.1" });
        show();
        const shown = { openFileName: ["Filename", "truck.kvt"],
            openFileCreated: ["Created", "2024-03-05 14:07"], openFileVersion: ["Version", "4.0.1"] };
        for (const name in shown) {
            compare([inView(name).title, inView(name).text], shown[name]);
            verify(inView(name).locked, name);
        }
        verify(inView("identifiersPanel").visible);
    }

    function test_picking_data() {
        return [
            { tag: "base", button: "pickBaseButton", title: "Pick base .kvt", line: "pickedBase",
                text: "Base: 100% a#b.kvt", status: "base set: 100% a#b.kvt" },
            { tag: "donor", button: "pickDonorButton", title: "Pick donor .kvt", line: "pickedDonor",
                text: "Donor: 100% a#b.kvt", status: "donor set: 100% a#b.kvt" }
        ];
    }

    function test_picking(data) {
        fixture.writeFile("100% a#b.kvt");
        show();
        const dialog = find("segmentFileDialog");
        click(data.button);
        tryVerify(() => dialog.visible);
        compare(dialog.title, data.title);
        dialog.reject();
        tryVerify(() => !dialog.visible);
        compare(app.status, "");
        pick(data.button, "100% a#b.kvt");
        compare(app.status, data.status);
        compare(app.statusOK, 1);
        compare(find(data.line).text, data.text);
    }

    function test_whatIsPickedIsShown() {
        show();
        compare(find("pickedBase").text, "Base: none yet");
        compare(find("pickedDonor").text, "Donor: none yet");
        fixture.openFile("open.kvt", 64);
        compare(find("pickedBase").text, "Base: the KVT open on MAIN");
        const name = "<b>R&D " + "long name ".repeat(20) + ".kvt";
        fixture.writeFile(name);
        pick("pickDonorButton", name);
        render();
        const line = find("pickedDonor");
        compare(line.text, "Donor: " + name);
        compare(line.textFormat, Text.PlainText);
        compare(line.color, VOXTheme.muted);
        verify(line.truncated);
        const tip = find("fullText", line);
        mouseMove(line);
        tryVerify(() => tip.visible);
        compare(tip.contentItem.text, line.text);
        compare(tip.contentItem.textFormat, Text.PlainText);
        mouseMove(find("nav_main"));
        tryVerify(() => !tip.visible);
    }

    function test_bothFilesAreNeeded() {
        fixture.writeFile("base.kvt");
        show();
        const before = fixture.requestCount();
        for (const button of ["segmentSwapButton", "applySelectedButton"]) {
            app.setStatus("");
            click(button);
            compare(app.status, "Pick a base KVT and a donor KVT.");
            compare(app.statusOK, 0);
        }
        pick("pickBaseButton", "base.kvt");
        click("segmentSwapButton");
        compare(app.status, "Pick a base KVT and a donor KVT.");
        verifyNothingSent(before);
    }

    function test_previewComparesThePickedFiles() {
        fixture.writeFile("my base.kvt", 24);
        fixture.writeFile("my donor.kvt", 40);
        show();
        pick("pickBaseButton", "my base.kvt");
        pick("pickDonorButton", "my donor.kvt");
        requestOf(() => click("segmentSwapButton"));
        compare(part("operation"), "segment_swap_preview");
        compare(part("file").length, 24);
        compare(part("donor").length, 40);
        verify(fixture.lastRequestBody().includes('filename="my base.kvt"'));
        verify(fixture.lastRequestBody().includes('filename="my donor.kvt"'));
        compare(app.busy, false);
        verify(find("applySelectedButton").enabled);
    }

    function test_openFileIsTheBaseByDefault() {
        fixture.writeFile("donor.kvt", 40);
        requestOf(() => fixture.openFile("open.kvt", 64, "tune"));
        show();
        pick("pickDonorButton", "donor.kvt");
        requestOf(() => click("segmentSwapButton"));
        verify(part("file").endsWith("tune"));
        verify(fixture.lastRequestBody().includes('filename="open.kvt"'));
    }

    function test_candidatesAreListed() {
        const list = preview([{ targetIndex: 3, donorIndex: 1, label: "Fuel" },
            { targetIndex: 1, donorIndex: 2 }, { targetIndex: 12, donorIndex: 7, label: "" }, { label: null }]);
        compare([0, 1, 2, 3].map(row => labelOf(row).text), ["Fuel", "T1 ← D2", "T12 ← D7", "T0 ← D0"]);
        compare(app.swapCandidates[2].label, "");
        for (const row of [0, 1, 2, 3]) {
            compare(boxOf(row).checked, true);
            compare(boxOf(row).Accessible.name, labelOf(row).text);
            compare(rowOf(row).height, 32);
        }
        verify(!find("swapEmptyLine").visible);
        verify(list.Accessible.name !== "");
    }

    function test_emptyListSaysWhatToDo() {
        show();
        const line = find("swapEmptyLine");
        verify(line.visible);
        compare(line.color, VOXTheme.muted);
        compare(line.text, "No swaps to choose from. Pick a donor, then press SEGMENT SWAP.");
        fixture.writeFile("donor.kvt");
        pick("pickDonorButton", "donor.kvt");
        compare(line.text, "No swaps to choose from. SEGMENT SWAP compares base and donor.");
        const place = inWindow(line);
        const area = inWindow(find("swapList"));
        verify(place.x > area.x && place.right < area.right && place.bottom < area.bottom);
    }

    function test_tickingIsTheControllers() {
        preview(numbered(5));
        mouseClick(boxOf(1));
        mouseClick(boxOf(3));
        compare(selection(), [true, false, true, false, true]);
        requestOf(() => click("applySelectedButton"));
        compare(part("operation"), "segment_swap");
        compare(part("swap_candidate_indices"), "0,2,4");
        compare(part("file").length, 24);
        compare(part("donor").length, 40);
        verify(fixture.lastRequestBody().includes('filename="donor.bin"'));
    }

    function test_boxFollowsTheController() {
        preview(numbered(3));
        app.setCandidateSelected(1, false);
        tryCompare(boxOf(1), "checked", false);
        mouseClick(boxOf(1));
        compare(app.swapCandidates[1].selected, true);
        tryVerify(() => find("swapList").model.rows[1].selected);
        app.setCandidateSelected(1, false);
        tryCompare(boxOf(1), "checked", false);
        compare(boxOf(0).checked, true);
    }

    function test_onlyTheBoxTicks() {
        const list = preview(numbered(3));
        mouseClick(labelOf(2));
        compare(selection(), [true, true, true]);
        compare(list.currentIndex, 2);
        verify(list.activeFocus);
    }

    function test_selectAll() {
        preview(numbered(4));
        const all = find("box", find("selectAllBox"));
        mouseClick(boxOf(2));
        compare(find("selectAllBox").checked, true);
        mouseClick(all);
        compare(selection(), [false, false, false, false]);
        tryCompare(boxOf(0), "checked", false);
        mouseClick(all);
        compare(selection(), [true, true, true, true]);
        tryCompare(boxOf(2), "checked", true);
    }

    function test_selectAllLooksAtTheListOnce() {
        const list = preview(numbered(200));
        const announced = createTemporaryObject(spyComponent, root,
            { target: app, signalName: "segmentsChanged" });
        const looked = createTemporaryObject(spyComponent, root,
            { target: list.model, signalName: "rowsChanged" });
        mouseClick(find("box", find("selectAllBox")));
        compare(announced.count, 200);
        tryVerify(() => list.model.rows.every(candidate => !candidate.selected));
        compare(looked.count, 1);
    }

    function test_longListKeepsItsPlace() {
        const list = preview(numbered(5000));
        list.positionViewAtIndex(2500, ListView.Center);
        list.forceActiveFocus(Qt.TabFocusReason);
        render();
        const place = list.contentY;
        verify(place > 0);
        const row = rowOf(2500);
        mouseClick(boxOf(2500));
        compare(app.swapCandidates[2500].selected, false);
        tryVerify(() => !list.model.rows[2500].selected);
        render();
        compare(rowOf(2500), row);
        compare(boxOf(2500).checked, false);
        compare(list.contentY, place);
        verify(list.activeFocus);
        compare(list.currentIndex, 2500);
        verify(madeRows(list) < 60, madeRows(list));
        mouseClick(find("box", find("selectAllBox")));
        tryVerify(() => !boxOf(2501).checked);
        render();
        compare(list.contentY, place);
        verify(selection().every(selected => !selected));
    }

    function test_rowHalfInSightStaysWhereItIs() {
        const list = preview(numbered(100));
        list.contentY = list.originY + 22;
        render();
        const place = list.contentY;
        const box = boxOf(0);
        mouseClick(box, 11, 20);
        compare(app.swapCandidates[0].selected, false);
        render();
        compare(list.contentY, place);
        compare(list.currentIndex, 0);
    }

    function test_everyRowOfALongListIsRight() {
        const list = preview(numbered(400));
        app.setCandidateSelected(399, false);
        tryVerify(() => !list.model.rows[399].selected);
        for (const row of [0, 399, 200, 50, 398]) {
            list.positionViewAtIndex(row, ListView.Beginning);
            render();
            compare(labelOf(row).text, "Segment " + row);
            compare(boxOf(row).checked, row !== 399);
        }
        verify(madeRows(list) < 60, madeRows(list));
    }

    function test_newListStartsAtItsTop() {
        const list = preview(numbered(300));
        list.forceActiveFocus(Qt.TabFocusReason);
        keyClick(Qt.Key_End);
        render();
        compare(list.currentIndex, 299);
        previewAgain(numbered(200));
        compare(list.currentIndex, -1);
        compare(list.contentY, list.originY);
    }

    function test_failedPreviewKeepsTheList() {
        const list = preview(numbered(3));
        mouseClick(boxOf(1));
        fixture.answerNext('{"status":"error","message":"No such donor."}');
        click("segmentSwapButton");
        tryCompare(app, "status", "No such donor.");
        compare(list.count, 3);
        compare(selection(), [true, false, true]);
    }

    function test_keyboardMovesAndTicks() {
        const list = preview(numbered(60));
        list.forceActiveFocus(Qt.TabFocusReason);
        keyClick(Qt.Key_Space);
        verify(selection().every(selected => selected));
        keyClick(Qt.Key_Down);
        keyClick(Qt.Key_Down);
        compare(list.currentIndex, 1);
        compare(rowOf(1).color, VOXTheme.accent(0.22));
        keyClick(Qt.Key_Space);
        compare(app.swapCandidates[1].selected, false);
        compare(boxOf(1).checked, false);
        keyClick(Qt.Key_Space);
        compare(app.swapCandidates[1].selected, true);
        keyClick(Qt.Key_End);
        compare(list.currentIndex, 59);
        render();
        const inSight = place => place.top >= inWindow(list).top && place.bottom <= inWindow(list).bottom;
        tryVerify(() => inSight(inWindow(rowOf(59))));
        keyClick(Qt.Key_Space);
        compare(app.swapCandidates[59].selected, false);
        keyClick(Qt.Key_Home);
        tryVerify(() => inSight(inWindow(rowOf(0))));
        verify(list.activeFocus);
    }

    function test_heldSpaceTicksOnce() {
        const list = preview(numbered(3));
        list.forceActiveFocus(Qt.TabFocusReason);
        list.currentIndex = 1;
        hold(Qt.Key_Space);
        compare(app.swapCandidates[1].selected, false);
    }

    function test_onlyApplyingWaitsForTheService() {
        preview(numbered(3));
        fixture.startConversion();
        compare(app.busy, true);
        compare(find("applySelectedButton").enabled, false);
        compare(find("applySelectedButton").background.opacity, 0.45);
        for (const name of ["pickBaseButton", "pickDonorButton", "segmentSwapButton", "swapList"])
            verify(find(name).enabled, name);
        verify(boxOf(0).enabled);
    }

    function test_doubleClickAppliesOnce() {
        preview(numbered(3));
        const before = fixture.requestCount();
        mouseDoubleClickSequence(find("applySelectedButton"));
        verifySent(before, 1);
    }

    function test_longLabelIsShownWholeOnHover() {
        const label = "Main spark table ".repeat(30);
        const list = preview([{ label: label }, { label: "short" }]);
        verify(labelOf(0).truncated);
        compare(labelOf(0).elide, Text.ElideRight);
        compare(labelOf(0).lineCount, 1);
        verify(inWindow(labelOf(0)).right <= inWindow(list).right - 14);
        const tip = find("fullText", list);
        mouseMove(labelOf(0));
        tryVerify(() => tip.visible);
        compare(tip.contentItem.text, label);
        compare(tip.contentItem.textFormat, Text.PlainText);
        mouseMove(labelOf(1));
        tryVerify(() => !tip.visible);
    }

    function test_hostileLabels_data() {
        return [
            { tag: "picture", label: "<img src='" + fixture.address("x.png") + "'>" },
            { tag: "tag", label: "<b>bold</b>" },
            { tag: "ampersand", label: "R&D" },
            { tag: "override", label: "a\u202Eb" },
            { tag: "newline", label: "a\nb\nc" },
            { tag: "nul", label: "a\u0000b" },
            { tag: "long", label: "x".repeat(1000000) }
        ];
    }

    function test_hostileLabels(data) {
        const list = preview([{ label: data.label }]);
        const label = labelOf(0);
        verify(label.text === data.label.slice(0, 500), label.text);
        compare(label.textFormat, Text.PlainText);
        verify(inWindow(label).height <= 32);
        compare(rowOf(0).shortened, ["newline", "long"].includes(data.tag));
        mouseMove(label);
        tryVerify(() => rowOf(0).hovered);
        mouseClick(boxOf(0));
        compare(app.swapCandidates[0].selected, false);
        verify(app.swapCandidates[0].label === data.label);
        verifyNothingFetched();
        compare(list.count, 1);
    }

    function test_tabKeyWalksInReadingOrder() {
        preview(numbered(3));
        const order = ["openFileName", "openFileCreated", "openFileVersion"].map(
            name => find("field", inView(name))).concat(find("pickBaseButton"), find("pickDonorButton"),
            find("segmentSwapButton"), find("applySelectedButton"), find("box", find("selectAllBox")),
            find("swapList"));
        order[0].forceActiveFocus(Qt.TabFocusReason);
        for (const item of order) {
            compare(window.activeFocusItem, item, item.objectName);
            verify(item.Accessible.name !== "", item.objectName);
            keyClick(Qt.Key_Tab);
        }
        // The check boxes of the rows are not tab stops.
        compare(inView("identifiersPanel").contains(inView("identifiersPanel").mapFromItem(
            window.activeFocusItem, 1, 1)), true);
    }

    function test_everythingIsInReach_data() {
        return [{ tag: "1440", width: 1440, height: 900 }, { tag: "1100", width: 1100, height: 720 }];
    }

    function test_everythingIsInReach(data) {
        window.width = data.width;
        window.height = data.height;
        tryCompare(window.contentItem, "height", data.height);
        tryCompare(window.contentItem, "width", data.width);
        const list = preview(numbered(20));
        const fields = ["openFileCreated", "openFileVersion"].map(name => inWindow(inView(name)));
        compare(fields[1].right, inWindow(inView("openFileName")).right);
        if (data.height < 800)
            compare(fields.map(field => field.x), ["pickBaseButton", "pickDonorButton"].map(
                name => inWindow(inView(name)).x));
        verify(list.height >= 140, list.height);
        list.forceActiveFocus(Qt.TabFocusReason);
        render();
        verify(inWindow(list).bottom <= inWindow(find("footer")).top - 20);
        const buttons = ["pickBaseButton", "pickDonorButton", "segmentSwapButton", "applySelectedButton"];
        for (const name of buttons) {
            find(name).forceActiveFocus(Qt.TabFocusReason);
            render();
            const place = inWindow(find(name));
            verify(place.top >= inWindow(find("segmentsScroll")).top, name);
            verify(place.bottom <= inWindow(find("footer")).top - 20, name);
            verify(!find(name).contentItem.truncated, name);
        }
    }

    Component {
        id: spyComponent

        SignalSpy {}
    }
}
