import QtQuick
import QtTest
import KvtEditor

ViewTest {
    id: root

    name: "ConvertView"

    readonly property var buttons: ["convertBinToKvt", "convertKvtToBin", "convertKvtToBinCm2450",
        "convertBinToKvtCm2450", "convertCtzToBin", "convertKvtToEfi", "convertCtzToKvt"]

    function show(): void {
        app.tab = "convert";
        render();
    }

    function inView(name: string): var {
        return find(name, find("convertView"));
    }

    // A tune file in the workspace, whose identifiers the service has been asked for.
    function openTune(name: string): void {
        const asked = fixture.requestCount();
        fixture.openFile(name, 64, "tune");
        tryVerify(() => fixture.requestCount() > asked && fixture.allArrived());
        compare(fixture.requestCount(), asked + 1);
    }

    // The parts of the one request that `action` makes, by their names.
    function requestOf(action: var): var {
        const asked = fixture.requestCount();
        action();
        tryVerify(() => fixture.requestCount() > asked && fixture.allArrived());
        compare(fixture.requestCount(), asked + 1);
        const boundary = fixture.lastRequestBody().split("\r\n", 1)[0];
        const parts = {};
        for (const part of fixture.lastRequestBody().split(boundary).slice(1, -1)) {
            const headEnd = part.indexOf("\r\n\r\n");
            const head = part.slice(0, headEnd);
            parts[/name="([^"]*)"/.exec(head)[1]] = {
                file: (/filename="([^"]*)"/.exec(head) ?? ["", ""])[1],
                content: part.slice(headEnd + 4, -2)
            };
        }
        return parts;
    }

    function choose(dialog: var, name: string): void {
        tryVerify(() => dialog.visible);
        dialog.close();
        dialog.selectedFile = fixture.urlOf(fixture.tempPath(name));
        dialog.accepted();
    }

    function test_texts() {
        show();
        const texts = ["BIN → KVT", "KVT → BIN", "KVT → BIN (CM2450)", "BIN → KVT (CM2450)", "CTZ → BIN",
            "KVT → EFI", "CTZ → KVT"];
        compare(buttons.map(name => find(name).text), texts);
        const caption = find("convertCaption");
        compare(caption.text, "CM2450 Only");
        compare(caption.color, VOXTheme.orange);
        compare(caption.font.pixelSize, 12);
        compare(caption.font.weight, Font.DemiBold);
        const note = find("convertModulesNote");
        compare(note.text,
            "Supported modules: E41 (L5P), E86A, E86B (LML), T87, T87A, A50, CM2450, CM2350B");
        compare(note.color, VOXTheme.muted);
        compare(note.wrapMode, Text.Wrap);
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

    function test_openFileIsConverted_data() {
        return [
            { tag: "bin", button: "convertKvtToBin", operation: "convert_kvt2bin" },
            { tag: "cm2450", button: "convertKvtToBinCm2450", operation: "convert_cm2450_kvt2bin" },
            { tag: "efi", button: "convertKvtToEfi", operation: "convert_kvt2efi_live_bin" }
        ];
    }

    function test_openFileIsConverted(data) {
        openTune("100% a#b.kvt");
        show();
        const parts = requestOf(() => click(data.button));
        compare(Object.keys(parts).sort(), ["file", "operation", "version"]);
        compare(parts.operation.content, data.operation);
        compare(parts.file.file, "100% a#b.kvt");
        compare(parts.file.content, "\u0000".repeat(60) + "tune");
        compare(app.busy, true);
    }

    function test_doubleClickConvertsOnce_data() {
        return test_openFileIsConverted_data();
    }

    function test_doubleClickConvertsOnce(data) {
        openTune("a.kvt");
        show();
        const before = fixture.requestCount();
        mouseDoubleClickSequence(find(data.button));
        verifySent(before, 1);
    }

    function test_openFileIsNeeded_data() {
        return [{ tag: "bin", button: "convertKvtToBin" }, { tag: "cm2450", button: "convertKvtToBinCm2450" },
            { tag: "efi", button: "convertKvtToEfi" }];
    }

    function test_openFileIsNeeded(data) {
        show();
        const before = fixture.requestCount();
        click(data.button);
        compare(app.status, "Open an KVT on MAIN or pick a file first.");
        compare(app.statusOK, 0);
        compare(app.busy, false);
        verifyNothingSent(before);
    }

    function test_pickedFileIsConverted_data() {
        return [
            { tag: "bin-to-kvt", button: "convertBinToKvt", operation: "convert_bin2kvt_import" },
            { tag: "ctz-to-bin", button: "convertCtzToBin", operation: "convert_ctz2bin" },
            { tag: "ctz-to-kvt", button: "convertCtzToKvt", operation: "convert_ctz2kvt" }
        ];
    }

    function test_pickedFileIsConverted(data) {
        fixture.writeFile("picked/100% a#b.bin", 48);
        openTune("open.kvt");
        show();
        const parts = requestOf(() => {
            click(data.button);
            choose(find("convertInputDialog"), "picked/100% a#b.bin");
        });
        compare(Object.keys(parts).sort(), ["file", "operation", "version"]);
        compare(parts.operation.content, data.operation);
        compare(parts.file.file, "100% a#b.bin");
        compare(parts.file.content, "\u0000".repeat(48));
    }

    function test_pickersFilters_data() {
        return [
            { tag: "general", dialog: "convertInputDialog", filter: "Calibration (*.bin *.kvt *.ctz *)" },
            { tag: "header", dialog: "convertHeaderDialog", filter: "BIN (*.bin)" },
            { tag: "export", dialog: "convertExportDialog", filter: "BIN (*.bin)" }
        ];
    }

    function test_pickersFilters(data) {
        compare(find(data.dialog).nameFilters, [data.filter, "All files (*)"]);
    }

    function test_pickerBeginsWithItsFirstFilter() {
        show();
        const dialog = find("convertInputDialog");
        dialog.selectedNameFilter.index = 1;
        click("convertCtzToBin");
        tryVerify(() => dialog.visible);
        compare(dialog.selectedNameFilter.index, 0);
        dialog.close();
    }

    function test_headerAndExportTravelTogether() {
        fixture.writeFile("cm/header #1.bin", 24);
        fixture.writeFile("cm/export 100%.bin", 40);
        show();
        const before = fixture.requestCount();
        click("convertBinToKvtCm2450");
        choose(find("convertHeaderDialog"), "cm/header #1.bin");
        verifyNothingSent(before);
        const parts = requestOf(() => choose(find("convertExportDialog"), "cm/export 100%.bin"));
        compare(Object.keys(parts).sort(), ["export", "file", "header", "operation", "version"]);
        compare(parts.operation.content, "convert_cm2450_bin2kvt");
        compare(parts.file.file, "header #1.bin");
        compare(parts.file.content.length, 24);
        compare(parts.header.content.length, 24);
        compare(parts.export.content.length, 40);
    }

    function test_exportIsLookedForBesideItsHeader() {
        fixture.writeFile("beside/header.bin");
        show();
        click("convertBinToKvtCm2450");
        const header = find("convertHeaderDialog");
        tryVerify(() => header.visible);
        header.currentFolder = fixture.urlOf(fixture.tempPath("beside"));
        choose(header, "beside/header.bin");
        const exported = find("convertExportDialog");
        tryVerify(() => exported.visible);
        compare(exported.currentFolder, fixture.urlOf(fixture.tempPath("beside")));
        exported.close();
    }

    function test_cancellingSendsNothing_data() {
        return [
            { tag: "general", button: "convertBinToKvt", dialogs: ["convertInputDialog"] },
            { tag: "header", button: "convertBinToKvtCm2450", dialogs: ["convertHeaderDialog"] },
            { tag: "export", button: "convertBinToKvtCm2450",
                dialogs: ["convertHeaderDialog", "convertExportDialog"] }
        ];
    }

    function test_cancellingSendsNothing(data) {
        fixture.writeFile("cancelled.bin");
        openTune("open.kvt");
        show();
        const before = fixture.requestCount();
        const status = app.status;
        click(data.button);
        for (const name of data.dialogs.slice(0, -1))
            choose(find(name), "cancelled.bin");
        const last = find(data.dialogs[data.dialogs.length - 1]);
        tryVerify(() => last.visible);
        last.reject();
        tryVerify(() => !last.visible);
        verify(!find("convertExportDialog").visible);
        compare(app.busy, false);
        compare(app.status, status);
        verifyNothingSent(before);
    }

    function test_buttonsWaitForTheService() {
        openTune("busy.kvt");
        show();
        for (const name of buttons)
            verify(find(name).enabled, name);
        click("convertKvtToEfi");
        compare(app.busy, true);
        for (const name of buttons) {
            verify(!find(name).enabled, name);
            compare(find(name).background.opacity, 0.45);
        }
    }

    function test_buttonsComeBackWithTheKeyboard() {
        openTune("answered.kvt");
        show();
        fixture.answerNext('{"status":"ok"}');
        find("convertKvtToBin").forceActiveFocus(Qt.TabFocusReason);
        keyClick(Qt.Key_Space);
        compare(app.busy, true);
        tryCompare(app, "busy", false);
        compare(app.statusOK, 1);
        verify(find("convertKvtToBin").enabled);
        compare(window.activeFocusItem, find("convertKvtToBin"));
    }

    function test_buttonsStandInTwoColumns_data() {
        return [{ tag: "1440", width: 1440 }, { tag: "1100", width: 1100 }];
    }

    function test_buttonsStandInTwoColumns(data) {
        window.width = data.width;
        tryCompare(window.contentItem, "width", data.width);
        show();
        const edges = inWindow(inView("openFileName"));
        const rows = [["convertBinToKvt", "convertKvtToBin"],
            ["convertKvtToBinCm2450", "convertBinToKvtCm2450"], ["convertKvtToEfi", "convertCtzToKvt"]];
        for (const row of rows) {
            const [left, right] = row.map(name => inWindow(find(name)));
            compare(left.y, right.y);
            compare(left.x, edges.x);
            compare(right.right, edges.right);
            compare(right.x - left.right, 12);
            fuzzyCompare(left.width, right.width, 1);
        }
        compare(inWindow(find("convertCtzToBin")).width, edges.width);
        for (const name of buttons)
            verify(!find(name).contentItem.truncated, name);
    }

    function test_tabKeyWalksInReadingOrder() {
        show();
        const order = ["openFileName", "openFileCreated", "openFileVersion"].map(
            name => find("field", inView(name))).concat(buttons.map(name => find(name)));
        order[0].forceActiveFocus(Qt.TabFocusReason);
        for (const item of order) {
            compare(window.activeFocusItem, item, item.objectName);
            verify(item.Accessible.name !== "", item.objectName);
            if (buttons.includes(item.objectName))
                compare(item.background.border.color, VOXTheme.focusRing);
            keyClick(Qt.Key_Tab);
        }
        verify(!order.includes(window.activeFocusItem));
    }

    function test_smallestWindowShowsAllOfIt() {
        window.width = 1100;
        window.height = 720;
        tryCompare(window.contentItem, "height", 720);
        show();
        for (const name of buttons)
            verify(inWindow(find(name)).bottom <= inWindow(find("footer")).top - 20, name);
        const view = find("scrollView", find("convertScroll"));
        compare(view.contentHeight, view.height);
    }

    function test_hostileName() {
        const name = "<img src='" + fixture.address("x.png").replace(/\//g, "_") + "'>R&D.kvt";
        openTune(name);
        show();
        compare(inView("openFileName").text, name);
        verifyNothingFetched();
    }
}
