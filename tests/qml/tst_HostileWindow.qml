import QtQuick
import QtQuick.Controls.Basic
import QtTest
import KvtEditor

// One text of the worst kind in every place of the window at once: whatever shows it, in whatever view, shows
// letters, keeps to its place, and fetches nothing.
HostileTest {
    id: root

    name: "HostileWindow"

    // How many items in sight say the text at least, controls and their own labels both; each view's own test tells
    // which.
    readonly property var shownPerView: ({ main: 22, convert: 22, segments: 30, search: 5, sorter: 5, xdf: 12,
        patcher: 6, tools: 1, stock: 11, feedback: 6 })

    function infoOf(text: string, moduleCount: int): var {
        const module = { title: text, vin: text, serial: text, mainOs: text,
            rows: Array(6).fill({ label: text, value: text }) };
        return { status: "ok", vin1: text, serial1: text, os1: text, created: text, softwareVersion: text, interfaceCalId: text,
            modules: Array(moduleCount).fill(module) };
    }

    function open(text: string): void {
        fixture.answerNext(bodyOf(infoOf(text, 1)));
        fixture.openFile("opened.kvt", 64);
        tryVerify(() => app.interfaceID !== "", 30000);
    }

    function fetchLists(text: string): void {
        answer({ token: text, credits: text }, () => app.xdfLogin());
        answer({ items: Array(3).fill({ id: text, title: text, os_id: text, credits: 1 }) }, () => app.xdfCatalog());
        answer({ credits: text, patches: Array(3).fill({ id: 1, variant: text, description: text }) },
            () => app.loadPatches(text));
        const file = { id: text, filename: text, os: text, module: text, year: text, make: text, model: text };
        answer({ files: [file, Object.assign({}, file, { make: "" }), file] }, () => app.stockSearch({}));
        fixture.writeFile("donor.kvt");
        app.pickSegmentFile("donor", fixture.tempPath("donor.kvt"));
        answer(Object.assign(infoOf(text, 1), { candidates: Array(3).fill({ label: text }) }),
            () => app.previewSegments());
        answer({ ticket: text, messages: Array(3).fill({ from: text, text: text }) }, () => app.loadTicket(text));
    }

    function fillFields(text: string): void {
        for (const name of ["ticketIdField", "ticketReplyField", "ticketDescriptionField", "stockMakeField",
            "searchNameField", "patcherCalIdField"])
            input(name).text = text;
        find("dtcField").text = text;
        find("hexSearchField").text = text;
        find("hexPatchField").text = text;
        find("searchView").folder = text;
        find("sorterView").files = [text, text];
        find("sorterView").folder = text;
        find("segmentsView").baseName = text;
        find("segmentsView").donorName = text;
    }

    function test_everyView_data() { return rows(Object.keys(texts()).concat("endless")); }

    function test_everyView(data) {
        const text = texts()[data.tag] ?? "x".repeat(200000);
        const opened = fixture.openedUrls().length;
        visitAll();
        open(text);
        fetchLists(text);
        fillFields(text);
        app.setStatus(text, 0);
        for (const view of window.viewKeys) {
            app.tab = view;
            render();
            // The status line is always there.
            const count = verifyView(text) - 1;
            verify(count >= shownPerView[view], view + " shows it " + count + " times");
        }
        app.showHex = true;
        render();
        verify(verifyView(text) >= 3);
        app.showHex = false;
        compare(window.title, "VOX - KVT Editor");
        compare(fixture.openedUrls().length, opened);
        verifyNothingFetched();
    }

    function test_severalModules_data() { return rows(["picture", "newlines", "combining", "long"]); }

    function test_severalModules(data) {
        const text = texts()[data.tag];
        visitAll();
        open(text);
        const answered = fixture.requestCount();
        fixture.answerNext(bodyOf(infoOf(text, 3)));
        fixture.openFile("opened.kvt", 64);
        tryCompare(app.modules, "length", 3, 30000);
        verify(fixture.requestCount() > answered);
        for (const view of ["main", "convert", "segments"]) {
            app.tab = view;
            render();
            const count = verifyView(text);
            verify(count >= 15, view + " shows it " + count + " times");
        }
        verifyNothingFetched();
    }

    // What a row had to shorten is told in a tool tip that has an end.
    function test_toolTips_data() {
        return rows(["newlines", "long", "combining"]);
    }

    function test_toolTips(data) {
        const text = texts()[data.tag];
        visitAll();
        open(text);
        fetchLists(text);
        fillFields(text);
        let tips = 0;
        for (const place of [["segments", "swapList", "swapCandidate0"], ["sorter", "sorterList", "sorterFile0"],
                ["xdf", "xdfList", "xdfItem0"], ["patcher", "patcherList", "patch0"],
                ["stock", "stockList", "stockRow0"]]) {
            app.tab = place[0];
            render();
            const row = find(place[2]);
            if (!row.shortened)
                continue;
            const tip = find("fullText", find(place[1]));
            mouseMove(row, 20, 10);
            tryVerify(() => tip.opened, 60000, place[2]);
            render();
            verify(tip.width <= 640, place[2] + ": " + tip.width);
            verify(tip.height <= 700, place[2] + ": " + tip.height);
            compare(tip.contentItem.textFormat, Text.PlainText);
            ++tips;
            mouseMove(window.contentItem, 1, 1);
            tryVerify(() => !tip.visible);
        }
        verify(tips >= 3, tips);
    }

    // The service's own words for what went wrong, in every shape in which they come.
    function test_failures_data() {
        return rows(["picture", "newlines", "lone-surrogate", "place-holder", "long"]);
    }

    function test_failures(data) {
        const text = texts()[data.tag];
        visitAll();
        fixture.openFile("opened.kvt", 64);
        tryVerify(() => fixture.allArrived());
        fixture.writeFile("donor.kvt");
        app.pickSegmentFile("donor", fixture.tempPath("donor.kvt"));
        fixture.answerNext(bodyOf({ items: [{ id: "1", title: "T" }] }));
        app.xdfCatalog();
        tryCompare(app, "status", "Catalog: 1 item(s).");
        fixture.answerNext(bodyOf({ files: [{ id: "1", filename: "f.bin" }] }));
        app.stockSearch({});
        tryCompare(app, "status", "1 stock file(s).");
        fixture.answerNext(bodyOf({ patches: [{ id: 1 }] }));
        app.loadPatches("1");
        tryCompare(app, "status", "1 patch(es) for 1.");
        const refusal = { error: text };
        const calls = [
            [refusal, () => app.xdfLogin()],
            [refusal, () => app.stockDownload(0, true)],
            [refusal, () => app.applyPatchToBin(0, fixture.tempPath("donor.kvt"))],
            [{ status: "ok", message: text }, () => app.applyPatchToBin(0, fixture.tempPath("donor.kvt"))],
            [{ status: "error", message: text }, () => app.previewSegments()],
            [{ status: "error", message: text }, () => app.convertOp("kvt2bin", "")],
            [refusal, () => app.submitTicket("bug", "n", "e", "d")],
            [{ status: "ok", ticket_id: text }, () => app.submitTicket("bug", "n", "e", "d")],
            [refusal, () => app.replyTicket("1", "m")],
            [refusal, () => app.sendToDev("e", "n")],
            [{ status: "ok", ticket_id: text }, () => app.sendToDev("e", "n")]
        ];
        for (const [object, call] of calls) {
            answer(object, call);
            verify(app.status.includes(text), call + ": " + app.status.slice(0, 100));
            render();
            verifyView(text);
            compare(find("statusLine").text, app.status.slice(0, 2000));
        }
        // Words that are no JSON at all.
        answerWords(text, () => app.xdfCatalog());
        verify(app.status.startsWith("HTTP 200: "), app.status.slice(0, 100));
        render();
        verifyView(text);
        verifyNothingFetched();
    }

    // The versions and links of the update check; only a link that the service gives for a newer one is opened, and
    // by the desktop.
    function test_updates_data() { return rows(["picture", "newlines", "place-holder"]); }

    function test_updates(data) {
        const text = texts()[data.tag];
        const opened = fixture.openedUrls().length;
        for (const update of [{ latest_version: text }, { latest_version: "9." + text }]) {
            fixture.answerNext(bodyOf(update));
            app.checkUpdate();
            compare(app.status, "Checking for updates...");
            tryVerify(() => app.status !== "Checking for updates...");
            render();
            verifyView(text);
        }
        verify(app.status === "Update 9." + text + " is available but no download link was provided.");
        compare(fixture.openedUrls().length, opened);
        verifyNothingFetched();
    }

    // The walk itself: what it must not pass.
    function test_walkSeesFaults_data() {
        return [
            { tag: "right", component: textComponent, properties: { textFormat: Text.PlainText }, fault: "" },
            { tag: "takes-tags", component: textComponent, properties: {}, fault: "takes tags" },
            { tag: "too-wide", component: textComponent, fault: /wide in 20$/,
              properties: { textFormat: Text.PlainText, width: 20 } },
            { tag: "too-high", component: textComponent, fault: /high in 5$/,
              properties: { textFormat: Text.PlainText, height: 5 } },
            { tag: "out-of-its-place", component: textComponent, fault: /beyond/,
              properties: { textFormat: Text.PlainText, x: -50 } },
            { tag: "below-the-window", component: textComponent, fault: /out of the window$/,
              properties: { textFormat: Text.PlainText, y: 895 } },
            { tag: "button", component: buttonComponent, properties: {}, fault: "a label of Qt's" }
        ];
    }

    function test_walkSeesFaults(data) {
        const item = createTemporaryObject(data.component, window.contentItem,
            Object.assign({ text: "some words" }, data.properties));
        render();
        verify(inSight().includes(item));
        const fault = faultOf(item);
        verify(data.fault instanceof RegExp ? data.fault.test(fault) : fault === data.fault, fault);
    }

    function test_walkSeesCollisions() {
        const place = inWindow(find("statusLine").parent);
        app.setStatus("some words", 0);
        render();
        compare(collision(), "");
        const beside = { text: "others", textFormat: Text.PlainText, x: place.x, y: place.y - 60 };
        const item = createTemporaryObject(textComponent, layerOf(find("statusLine")), beside);
        compare(collision(), "");
        item.y = inWindow(find("statusLine")).y;
        verify(/^(others.* and some words|some words.* and others)/.test(collision()), collision());
        const clip = createTemporaryObject(clipComponent, item.parent, { x: place.x, y: item.y });
        item.parent = clip;
        item.x = 0;
        item.y = 40;
        compare(collision(), "");
    }

    Component {
        id: clipComponent

        Item {
            width: 300
            height: 20
            clip: true
        }
    }

    Component {
        id: textComponent

        Text {}
    }

    Component {
        id: buttonComponent

        Button {}
    }
}
