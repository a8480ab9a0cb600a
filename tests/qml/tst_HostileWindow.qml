import QtQuick
import QtQuick.Controls.Basic
import QtTest
import KvtEditor

// One text of the worst kind in every place of the window at once: whatever shows it, in whatever view, shows
// letters, keeps to its place, and fetches nothing.
ViewTest {
    id: root

    name: "HostileWindow"

    // How many items in sight say the text at least, controls and their own labels both; each view's own test tells
    // which.
    readonly property var shownPerView: ({ main: 22, convert: 22, segments: 30, search: 5, sorter: 5, xdf: 12,
        patcher: 8, tools: 1, stock: 11, feedback: 6 })

    function texts(): var {
        return {
            "picture": "<img src='" + bed.address("picture.png") + "'>",
            "entities": "<img src='" + bed.address("picture.png").replace(/\//g, "&#47;") + "'>",
            "tag": "<b>bold</b>",
            "ampersand": "R&D &amp;&lt;b&gt;",
            "newlines": "line\n".repeat(300),
            "carriage-returns": "line\r\u2028".repeat(300),
            "nul": "a\u0000b",
            "override": "a\u202Eb",
            "lone-surrogate": "a\uD800b",
            "combining": "a" + "\u0301".repeat(2000),
            "links": "<a href='javascript:x()'>x</a> file:///etc/passwd",
            "markdown": "![x](" + bed.address("picture.png") + ")",
            "place-holder": "%1 %2 %n",
            "long": "x".repeat(1000000)
        };
    }

    function rows(tags: var): var {
        return tags.map(tag => ({ tag: tag }));
    }

    // Half a character has no UTF-8, but JSON can spell it.
    function bodyOf(object: var): string {
        return JSON.stringify(object).split("\uD800").join("\\ud800");
    }

    // What the service answers to a call, until the status line tells of it.
    function answerWords(words: string, call: var): void {
        bed.answerNext(words);
        app.setStatus("");
        call();
        tryVerify(() => app.status !== "", 30000);
    }

    function answer(object: var, call: var): void {
        answerWords(bodyOf(object), call);
    }

    function infoOf(text: string, moduleCount: int): var {
        const module = { title: text, vin: text, serial: text, mainOs: text,
            rows: Array(6).fill({ label: text, value: text }) };
        return { status: "ok", vin1: text, serial1: text, os1: text, created: text, softwareVersion: text, interfaceCalId: text,
            modules: Array(moduleCount).fill(module) };
    }

    function open(text: string): void {
        bed.answerNext(bodyOf(infoOf(text, 1)));
        bed.openFile("opened.kvt", 64);
        tryVerify(() => app.interfaceID !== "", 30000);
    }

    function fetchLists(text: string): void {
        answer({ token: text, credits: text }, () => app.xdfLogin());
        answer({ items: Array(3).fill({ id: text, title: text, os_id: text, credits: 1 }) }, () => app.xdfCatalog());
        answer({ credits: text, patches: Array(3).fill({ id: 1, variant: text, description: text }) },
            () => app.loadPatches(text));
        const file = { id: text, filename: text, os: text, module: text, year: text, make: text, model: text };
        answer({ files: [file, Object.assign({}, file, { make: "" }), file] }, () => app.stockSearch({}));
        bed.writeFile("donor.kvt");
        app.pickSegmentFile("donor", bed.tempPath("donor.kvt"));
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

    function visitAll(): void {
        app.showHex = true;
        app.showHex = false;
        for (const key of window.viewKeys) {
            app.tab = key;
            render();
        }
    }

    // Every item in sight, however deep; popups are in the overlay.
    function inSight(): var {
        const found = [];
        const collect = item => {
            if (!item.visible)
                return;
            found.push(item);
            for (let i = 0; i < item.children.length; ++i)
                collect(item.children[i]);
        };
        collect(window.contentItem);
        collect(window.overlayItem);
        return found;
    }

    function clipperOf(item: var): var {
        let around = item.parent;
        while (around.parent && !around.clip)
            around = around.parent;
        return around;
    }

    // Captions are in capitals, and lists make one line of several.
    function plain(text: string): string {
        return text.toUpperCase().replace(/[\r\n\u2028\u2029]+/g, " ");
    }

    function shows(item: var, text: string): bool {
        return plain(item.text.slice(0, 5000)).includes(plain(text.slice(0, 100).trim()));
    }

    // What is wrong with how the item shows its text; empty when nothing is.
    function faultOf(item: var): string {
        // A line of input has no format.
        if (item instanceof TextInput)
            return item.text.length <= 32767 ? "" : "more than a field takes";
        if (item instanceof Text || item instanceof TextEdit) {
            const place = inWindow(item);
            const around = inWindow(clipperOf(item));
            return item.textFormat !== Text.PlainText ? "takes tags"
                : item.contentWidth > item.width + 1 ? item.contentWidth + " wide in " + item.width
                : item.contentHeight > item.height + 1 ? item.contentHeight + " high in " + item.height
                : place.left < around.left - 1 || place.right > around.right + 1 ? place + " beyond " + around : "";
        }
        // Qt's own labels in controls take tags.
        return /IconLabel|CheckLabel|MnemonicLabel/.test(String(item.contentItem)) ? "a label of Qt's" : "";
    }

    // Every text in sight is letters; tells how many items say this one.
    function verifyView(text: string): int {
        let count = 0;
        for (const item of inSight()) {
            if (typeof item.text !== "string" || item.text === "")
                continue;
            const fault = faultOf(item);
            verify(fault === "", [item, item.objectName, item.text.slice(0, 60), fault].join(" "));
            if (shows(item, text))
                ++count;
        }
        return count;
    }

    function test_everyView_data() { return rows(Object.keys(texts())); }

    function test_everyView(data) {
        const text = texts()[data.tag];
        const opened = bed.openedUrls().length;
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
        compare(bed.openedUrls().length, opened);
        verifyNothingFetched();
    }

    function test_severalModules_data() { return rows(["picture", "newlines", "combining", "long"]); }

    function test_severalModules(data) {
        const text = texts()[data.tag];
        visitAll();
        open(text);
        const answered = bed.requestCount();
        bed.answerNext(bodyOf(infoOf(text, 3)));
        bed.openFile("opened.kvt", 64);
        tryCompare(app.modules, "length", 3, 30000);
        verify(bed.requestCount() > answered);
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
        bed.openFile("opened.kvt", 64);
        tryVerify(() => bed.allArrived());
        bed.writeFile("donor.kvt");
        app.pickSegmentFile("donor", bed.tempPath("donor.kvt"));
        bed.answerNext(bodyOf({ items: [{ id: "1", title: "T" }] }));
        app.xdfCatalog();
        tryCompare(app, "status", "Catalog: 1 item(s).");
        bed.answerNext(bodyOf({ files: [{ id: "1", filename: "f.bin" }] }));
        app.stockSearch({});
        tryCompare(app, "status", "1 stock file(s).");
        bed.answerNext(bodyOf({ patches: [{ id: 1 }] }));
        app.loadPatches("1");
        tryCompare(app, "status", "1 patch(es) for 1.");
        const refusal = { error: text };
        const calls = [
            [refusal, () => app.xdfLogin()],
            [refusal, () => app.stockDownload(0, true)],
            [refusal, () => app.applyPatchToBin(0, bed.tempPath("donor.kvt"))],
            [{ status: "ok", message: text }, () => app.applyPatchToBin(0, bed.tempPath("donor.kvt"))],
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
        const opened = bed.openedUrls().length;
        for (const update of [{ latest_version: text }, { latest_version: "9." + text }]) {
            bed.answerNext(bodyOf(update));
            app.checkUpdate();
            compare(app.status, "Checking for updates...");
            tryVerify(() => app.status !== "Checking for updates...");
            render();
            verifyView(text);
        }
        verify(app.status === "Update 9." + text + " is available but no download link was provided.");
        compare(bed.openedUrls().length, opened);
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

    Component {
        id: textComponent

        Text {}
    }

    Component {
        id: buttonComponent

        Button {}
    }
}
