import QtQuick
import QtTest
import KvtEditor

// Who is used to double clicks makes them everywhere: each does what one click does.
ViewTest {
    id: root

    name: "DoubleClicks"

    ownFileDialogs: true

    function show(view: string): void {
        app.tab = view;
        render();
    }

    function spyOn(target: var, signalName: string): var {
        return createTemporaryObject(spyComponent, root, { target: target, signalName: signalName });
    }

    // Runs `wait` between the two clicks.
    function mouseDoubleClickAround(button: var, wait: var, x: var, y: var): void {
        let clicks = 0;
        const between = () => {
            if (++clicks === 1)
                wait();
        };
        button.clicked.connect(between);
        mouseDoubleClickSequence(button, x, y);
        button.clicked.disconnect(between);
        compare(clicks, 1);
    }

    function openTune(): void {
        const before = fixture.requestCount();
        fixture.openFile("a.kvt", 64);
        tryVerify(() => fixture.requestCount() > before && fixture.allArrived());
    }

    function pickSegments(): void {
        fixture.writeFile("base.kvt", 24);
        fixture.writeFile("donor.kvt", 40);
        app.pickSegmentFile("base", fixture.tempPath("base.kvt"));
        app.pickSegmentFile("donor", fixture.tempPath("donor.kvt"));
    }

    // Has the service answer a call, and waits until the status line tells of it.
    function answered(body: var, call: var): void {
        fixture.answerNext(JSON.stringify(body));
        app.setStatus("");
        call();
        tryVerify(() => app.status !== "");
        render();
    }

    function previewSegments(): void {
        pickSegments();
        answered({ status: "ok", candidates: [{ label: "Fuel" }] }, () => app.previewSegments());
    }

    function findStock(): void {
        answered({ files: [{ id: 1, filename: "a.bin" }] }, () => app.stockSearch({}));
        find("stockResults").selected = 0;
    }

    function loadCatalog(): void {
        answered({ items: [{ id: 7, title: "Truck", os_id: "126", credits: 3 }] }, () => app.xdfCatalog());
    }

    function loadPatches(): void {
        answered({ patches: [{ id: 7, variant: "A", description: "B" }] }, () => app.loadPatches("126"));
    }

    function fillTicket(): void {
        const texts = { ticketDescriptionField: "It is slow.", ticketIdField: "T-7",
            ticketReplyField: "Thanks." };
        for (const name in texts)
            input(name).text = texts[name];
    }

    function test_request_data() {
        const none = () => {};
        return [
            { tag: "updatesButton", view: "main", prepare: none },
            { tag: "sendToDevButton", view: "main", prepare: () => input("devMessageField").text = "Hello." },
            { tag: "convertKvtToBin", view: "convert", prepare: openTune },
            { tag: "convertKvtToBinCm2450", view: "convert", prepare: openTune },
            { tag: "convertKvtToEfi", view: "convert", prepare: openTune },
            { tag: "segmentSwapButton", view: "segments", prepare: pickSegments },
            { tag: "applySelectedButton", view: "segments", prepare: previewSegments },
            { tag: "xdfLoginButton", view: "xdf", prepare: none },
            { tag: "xdfCatalogButton", view: "xdf", prepare: none },
            { tag: "action", view: "xdf", prepare: loadCatalog },
            { tag: "patcherLoadButton", view: "patcher", prepare: none },
            { tag: "stockSearchButton", view: "stock", prepare: none },
            { tag: "stockDownloadButton", view: "stock", prepare: findStock },
            { tag: "ticketSubmitButton", view: "feedback", prepare: fillTicket },
            { tag: "ticketLoadButton", view: "feedback", prepare: fillTicket },
            { tag: "ticketUpdateButton", view: "feedback", prepare: none },
            { tag: "ticketReplyButton", view: "feedback", prepare: fillTicket }
        ];
    }

    function test_request(data) {
        show(data.view);
        data.prepare();
        const before = fixture.requestCount();
        mouseDoubleClickSequence(find(data.tag, data.view === "xdf" ? find("xdfView") : null));
        verifySent(before, 1);
    }

    // The service may have answered by the second click: then nothing is under way that would keep it out.
    function test_requestAnsweredInBetween_data() {
        return test_request_data().filter(
            data => data.view === "convert" || data.tag === "applySelectedButton");
    }

    function test_requestAnsweredInBetween(data) {
        show(data.view);
        data.prepare();
        const before = fixture.requestCount();
        fixture.answerNext(JSON.stringify({ status: "error", message: "No." }));
        mouseDoubleClickAround(find(data.tag), () => tryVerify(() => !app.busy));
        verifySent(before, 1);
    }

    function test_page_data() {
        return [{ tag: "xdfRegisterButton", view: "xdf" }, { tag: "xdfForgotButton", view: "xdf" },
            { tag: "tile_delco", view: "tools" }, { tag: "updatesButton", view: "main", update: true },
            { tag: "ticketUpdateButton", view: "feedback", update: true }];
    }

    function test_page(data) {
        show(data.view);
        const opened = fixture.openedUrls().length;
        const before = fixture.requestCount();
        const update = { latest_version: "9.0", download_url: "https://127.0.0.1/setup" };
        if (data.update)
            fixture.answerNext(JSON.stringify(update));
        mouseDoubleClickSequence(find(data.tag));
        tryVerify(() => fixture.openedUrls().length > opened);
        verifySent(before, data.update ? 1 : 0);
        compare(fixture.openedUrls().length, opened + 1);
    }

    // What is not installed is told of instead, once as well.
    function test_program_data() {
        return [{ tag: "helpButton", view: "main" }, { tag: "tile_vbfphf", view: "tools" }];
    }

    function test_program(data) {
        show(data.view);
        const told = spyOn(app, "statusChanged");
        const opened = fixture.openedUrls().length;
        mouseDoubleClickSequence(find(data.tag));
        compare(told.count, 1);
        verify(fixture.openedUrls().length <= opened + 1);
    }

    function test_dialog_data() {
        return [
            { tag: "openFileButton", view: "main", taker: "openDialog" },
            { tag: "saveFileButton", view: "main" },
            { tag: "convertBinToKvt", view: "convert", taker: "convertInputDialog" },
            { tag: "convertBinToKvtCm2450", view: "convert" },
            { tag: "convertCtzToBin", view: "convert", taker: "convertInputDialog" },
            { tag: "convertCtzToKvt", view: "convert", taker: "convertInputDialog" },
            { tag: "pickBaseButton", view: "segments" },
            { tag: "pickDonorButton", view: "segments" },
            { tag: "searchBrowseButton", view: "search" },
            { tag: "searchButton", view: "search" },
            { tag: "sorterBrowseFilesButton", view: "sorter" },
            { tag: "sorterBrowseFolderButton", view: "sorter" },
            { tag: "tile_xcal", view: "tools", taker: "toolConvertDialog" },
            { tag: "tile_ecfg", view: "tools", taker: "toolConvertDialog" },
            { tag: "action", view: "patcher", prepare: loadPatches, taker: "patcherDialog" }
        ];
    }

    function test_dialog(data) {
        show(data.view);
        if (data.prepare)
            data.prepare();
        mouseDoubleClickSequence(find(data.tag, data.view === "patcher" ? find("patcherView") : null));
        tryVerify(() => window.asking());
        render();
        compare(itemsIn(window.overlayItem, item => item.objectName === "chooserList").length, 1);
        keyClick(Qt.Key_Escape);
        tryVerify(() => !window.asking());
        if (data.taker) {
            fixture.writeFile("chosen.bin", 16);
            const before = fixture.requestCount();
            const dialog = find(data.taker);
            dialog.selectedFile = fixture.urlOf(fixture.tempPath("chosen.bin"));
            dialog.accepted();
            verifySent(before, 1);
        }
    }

    function test_sorting() {
        fixture.writeFile("a 2014.kvt", 16);
        show("sorter");
        find("sorterView").files = [fixture.tempPath("a 2014.kvt")];
        find("sorterView").folder = fixture.tempPath("sorted");
        const told = spyOn(app, "statusChanged");
        const button = find("sorterStartButton");
        mouseDoubleClickAround(button, () => {
            tryVerify(() => told.count === 1);
            tryVerify(() => button.enabled);
        });
        compare(app.status, "Copied 1 of 1 file(s).");
        compare(told.count, 1);
    }

    function test_searching() {
        fixture.writeFile("searched/a.kvt", 16);
        show("search");
        find("searchView").folder = fixture.tempPath("searched");
        const told = spyOn(app, "statusChanged");
        const button = find("searchButton");
        mouseDoubleClickAround(button, () => {
            tryVerify(() => told.count === 2);
            tryVerify(() => button.enabled);
        });
        compare(app.status, "Found 1 file(s).");
        tryCompare(app, "searchBusy", false);
        compare(told.count, 2);
    }

    function test_popup() {
        show("tools");
        const popup = find("vinHexPopup");
        const changes = spyOn(popup, "visibleChanged");
        mouseDoubleClickSequence(find("tile_vin2hex"));
        tryVerify(() => popup.opened);
        compare(changes.count, 1);
        popup.close();
        tryVerify(() => !popup.visible);
    }

    // The first click shows another view, whose controls the second must not press.
    function test_searchHit_data() {
        return [{ tag: "saveFileButton" }, { tag: "hexEditorButton" }, { tag: "sendToDevButton" }];
    }

    function test_searchHit(data) {
        const below = inWindow(find(data.tag));
        for (let i = 0; i < 20; ++i)
            fixture.writeFile("hits/" + i + ".kvt", 16);
        show("search");
        find("searchView").takeFolder(fixture.tempPath("hits"));
        tryCompare(app, "searchBusy", false);
        const list = find("searchList");
        tryCompare(list, "count", 20);
        render();
        input("devMessageField").text = "Hello.";
        const place = list.mapFromItem(null, below.right - 20, below.y + below.height / 2);
        verify(list.itemAt(place.x, place.y + list.contentY), "there is no hit above " + data.tag);
        const before = fixture.requestCount();
        mouseDoubleClickSequence(window.contentItem, below.right - 20, below.y + below.height / 2);
        compare(app.tab, "main");
        compare(app.showHex, false);
        verify(!window.asking());
        verifySent(before, 1);
    }

    // What lies behind the hex editor is not pressed by the second click either.
    function test_closingTheHexEditor() {
        openTune();
        app.showHex = true;
        render();
        const place = inWindow(find("hexCloseButton"));
        const before = fixture.requestCount();
        mouseDoubleClickSequence(window.contentItem, place.x + place.width / 2, place.y + place.height / 2);
        compare(app.showHex, false);
        verifyNothingSent(before);
        const behind = inWindow(find("updatesButton"));
        verify(place.x < behind.right && place.right > behind.x, "nothing lies behind");
        verify(place.y < behind.bottom && place.bottom > behind.y, "nothing lies behind");
    }

    // Where one search follows the other, clicks may come as quick as they can.
    function test_findNextCountsEveryClick() {
        fixture.openFile("a.kvt", 64);
        app.showHex = true;
        render();
        find("hexSearchField").text = "00";
        const hex = app.hexModel;
        hex.cursor = 0;
        mouseDoubleClickSequence(find("hexNextButton"));
        compare(hex.cursor, 2);
    }

    Component {
        id: spyComponent

        SignalSpy {}
    }
}
