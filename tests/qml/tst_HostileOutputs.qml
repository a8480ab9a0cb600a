import QtQuick
import QtTest
import KvtEditor

// Texts from tickets, the store and a file's bytes, and those shown on hover, copied or spoken: even the worst are
// shown literally, stay within their bounds, and fetch nothing.
HostileTest {
    id: root

    name: "HostileOutputs"

    // Names and addresses of attachments are a part of the conversation; nothing is fetched by them.
    function test_attachments_data() {
        return rows(["picture", "entities", "tag", "newlines", "nul", "override", "lone-surrogate", "combining",
            "long"]);
    }

    function test_attachments(data) {
        const text = texts()[data.tag];
        const opened = fixture.openedUrls().length;
        const attachment = { name: text, filename: text, url: fixture.address("attachment.png"), type: text };
        show("feedback");
        const message = { text: "see it", attachments: [attachment] };
        answer({ ticket: "1", attachments: [attachment, text], messages: [message] }, () => app.loadTicket("1"));
        compare(app.status, "Loaded ticket.");
        const log = find("ticketLog");
        verify(log.text === app.threadText);
        if (data.tag !== "lone-surrogate")
            verify(JSON.parse(log.text).messages[0].attachments[0].name === text);
        const lines = find("lines", log);
        for (const row of [0, Math.floor(lines.count / 2), lines.count - 1]) {
            const line = rowOf(lines, row);
            verify(log.text.includes(line.text) && line.text.length <= 1000);
            compare(line.textFormat, Text.PlainText);
            compare(line.Accessible.name, line.text);
            verify(fixture.spokenTexts(line).includes(line.text));
            verifyView(text);
        }
        compare(fixture.openedUrls().length, opened);
        verifyNothingFetched();
    }

    // An answer of the store without items is shown as it came.
    function test_catalogAnswer_data() { return rows(["picture", "newlines", "combining", "override", "long"]); }

    function test_catalogAnswer(data) {
        const text = texts()[data.tag];
        show("xdf");
        answer({ note: text, items: [] }, () => app.xdfCatalog());
        compare(app.status, "Catalog: 0 item(s).");
        render();
        const line = find("catalogLine");
        verify(line.text !== "" && line.text === app.catalogText);
        verify(line.width <= find("xdfCatalogText").width);
        verifyView(text);
        verifyNothingFetched();
    }

    // The service names the fields of several modules, and a name that was copied by comes back on the status line.
    function test_copiedField_data() { return rows(["picture", "tag", "newlines", "combining", "override", "long"]); }

    function test_copiedField(data) {
        const text = texts()[data.tag];
        const module = { title: text, vin: text, serial: text, mainOs: text, rows: [{ label: text, value: text }] };
        fixture.applyInfo({ modules: [module, module] });
        render();
        const lines = find("lines", find("moduleList"));
        const last = app.modules[0].rows[0];
        const line = rowOf(lines, 4);
        verify(line.text === last.value, line.text.slice(0, 40));
        mouseClick(find("copyArea", line), 2, 5);
        verify(app.status === last.label + " copied.", app.status.slice(0, 100));
        verify(fixture.clipboardText() === last.value);
        verifyView(text);
        verifyNothingFetched();
    }

    function test_statusToolTip_data() {
        return [{ tag: "default-size" }, { tag: "smallest", width: 1100, height: 720 }];
    }

    function test_statusToolTip(data) {
        if (data.width) {
            window.width = data.width;
            window.height = data.height;
            tryCompare(window.contentItem, "height", data.height);
        }
        for (const tag of ["newlines", "carriage-returns", "long"]) {
            const text = texts()[tag];
            app.setStatus(text, 0);
            verifyView(text);
            verifyTip(find("statusLine"), find("statusToolTip"), text);
        }
        const picture = texts().picture.repeat(40);
        app.setStatus(picture, 0);
        verifyTip(find("statusLine"), find("statusToolTip"), picture);
        verifyNothingFetched();
    }

    // The bytes of a file as characters.
    function test_fileContent_data() {
        return [{ tag: "picture", text: "<img src='" + fixture.address("a") + "'>" }, { tag: "tag", text: "<b>bold</b>" },
            { tag: "ampersand", text: "R&amp;D &lt;b&gt;" }, { tag: "controls", text: "a\u0000b\nc\rd\te\u007F" },
            { tag: "override", text: "a\u202Eb\u2028c" }];
    }

    function test_fileContent(data) {
        fixture.openFile("content.kvt", 4096, data.text.repeat(10));
        app.showHex = true;
        for (const where of [0, 4095]) {
            app.hexModel.cursor = where;
            render();
            verifyView(data.text);
        }
        const shown = textsInSight().map(entry => entry.item.text).filter(text => text.length <= 64).join("");
        const readable = data.text.replace(/[^ -~]+/g, "").slice(0, 4);
        verify(data.tag === "controls" || data.tag === "override" || shown.includes(readable), shown);
        verify(!/[\u0000-\u001F\u007F\u202E\u2028]/.test(shown));
        verifyNothingFetched();
        app.showHex = false;
    }

    // A screen reader is told the letters, too, by whatever shows or stands for them.
    function test_spoken_data() { return rows(["picture", "tag", "ampersand", "nul", "override", "long"]); }

    function test_spoken(data) {
        const text = texts()[data.tag];
        const file = { id: "1", filename: text, make: text, module: text };
        fixture.writeFile("donor.kvt");
        fixture.writeFile("base.kvt");
        app.pickSegmentFile("base", fixture.tempPath("base.kvt"));
        app.pickSegmentFile("donor", fixture.tempPath("donor.kvt"));
        answer({ status: "ok", candidates: [{ label: text }] }, () => app.previewSegments());
        answer({ items: [{ id: "1", title: text, os_id: text }] }, () => app.xdfCatalog());
        answer({ patches: [{ id: 1, variant: text, description: text }] }, () => app.loadPatches("1"));
        answer({ files: [file] }, () => app.stockSearch({}));
        fixture.applyInfo({ vin: text, created: text });
        app.setStatus(text, 0);
        const places = [["main", "vinField"], ["segments", "swapCandidate0"], ["xdf", "xdfItem0"],
            ["patcher", "patch0"], ["stock", "stockRow0"]];
        for (const [tab, name] of places) {
            show(tab);
            const item = tab === "main" ? input(name) : find(name);
            const whole = tab === "main" ? item.text : text;
            verify(fixture.spokenTexts(item).includes(whole), name + ": " + fixture.spokenTexts(item).slice(0, 100));
            verify(fixture.spokenTexts(find("statusLine")).includes(text.slice(0, 2000)));
        }
        verifyNothingFetched();
    }
}
