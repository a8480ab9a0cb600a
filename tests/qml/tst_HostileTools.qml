import QtQuick
import QtTest
import KvtEditor

// What the tools and the transfers tell, made of hostile texts and numbers.
HostileTest {
    id: root

    name: "HostileTools"

    // Only digits make a message, so that a fault's line is made of words of our own; the field shows what was
    // pasted.
    function test_faultDecoder_data() {
        const all = texts();
        return [
            { tag: "picture", text: "<img src='" + fixture.address("p.png") + "'> 00 00 5B 00 03 01" },
            { tag: "tag", text: "<b>00 00 5B 00 03 01</b>", faults: 1 },
            { tag: "nul", text: "00 00 5B\u000000 03 01", faults: 1 },
            { tag: "override", text: "\u202E00 00 5B 00 03 01", faults: 1 },
            { tag: "wide-digits", text: "\uFF11".repeat(40), faults: 0 },
            { tag: "combining", text: all["combining"], faults: 0 },
            { tag: "half-a-character", text: all["lone-surrogate"], faults: 0 },
            { tag: "newlines", text: "00 00\n5B\r\n00\u2028 03 01", faults: 1 },
            { tag: "long", text: "F".repeat(1000000), faults: 124999 }
        ];
    }

    function test_faultDecoder(data) {
        show("tools");
        find("dtcField").text = data.text;
        click("dtcDecodeButton");
        const list = find("dtcList");
        compare(app.status, list.count + " DTC(s).");
        if (data.faults !== undefined)
            compare(list.count, data.faults);
        const ours = /^SPN \d+  FMI \d+ \([A-Za-z0-9 ()]+\)  OC \d+  lamp \d+  \[[0-9A-F]{8}\]$/;
        for (const row of app.j1939Rows)
            verify(ours.test(row.text), row.text);
        verifyView(data.text);
        if (list.count > 0) {
            const last = rowOf(list, list.count - 1);
            compare(find("line", last).text, app.j1939Rows[list.count - 1].text);
            verifyView(data.text);
        }
        verifyNothingFetched();
    }

    function test_characterTool_data() {
        return rows(["picture", "entities", "tag", "ampersand", "nul", "override", "lone-surrogate", "combining",
            "long"]);
    }

    function test_characterTool(data) {
        const text = texts()[data.tag];
        const isLatin = /^[\u0000-\u00FF]*$/.test(text);
        show("tools");
        find("tile_vin2hex").clicked();
        const popup = find("vinHexPopup");
        tryVerify(() => popup.opened);
        const field = name => find("field", find(name, popup.contentItem));
        field("vinTextField").text = text;
        const hex = field("vinHexField").text;
        verify(/^[0-9A-F]{2,6}( [0-9A-F]{2,6})*( |$)/.test(hex.slice(0, 3000)), hex.slice(0, 40));
        field("hexInField").text = isLatin ? hex : text;
        if (isLatin)
            verify(text.startsWith(field("asciiOutField").text) && field("asciiOutField").text !== "");
        verifyView(text);
        verify(inside(inWindow(popup.contentItem)));
        verifyNothingFetched();
        popup.close();
        tryVerify(() => !popup.visible);
    }

    // What the service tells about a tool's conversion instead of a file.
    function test_conversion_data() {
        return rows(["picture", "entities", "tag", "newlines", "nul", "override", "lone-surrogate", "combining",
            "long"]);
    }

    function test_conversion(data) {
        const text = texts()[data.tag];
        show("tools");
        fixture.writeFile("input.xcal");
        for (const kind of ["xcal", "ecfg"]) {
            const body = bodyOf({ status: "ok", note: text });
            answerWords(body, () => app.toolConvert(kind, fixture.tempPath("input.xcal")));
            verify(app.status.length <= 240 && app.status.startsWith('{"status":"ok","note":"'), app.status);
            verifyView(text);
            compare(find("statusLine").text, app.status);
        }
        verify(!app.busy);
        verifyNothingFetched();
    }

    // As long as an answer may be; the sum of two is more than an int holds.
    function test_announcedLengths_data() {
        return [
            { tag: "one", lengths: ["2147483647"], total: " of 2.1 GB" },
            { tag: "two", lengths: ["2147483647", "2147483647"], total: " of 4.3 GB" },
            { tag: "below-nothing", lengths: ["-5"], total: "" }
        ];
    }

    function test_announcedLengths(data) {
        const label = find("transferLabel");
        const first = fixture.requestCount();
        for (let i = 0; i < data.lengths.length; ++i)
            app.loadTicket("1");
        tryVerify(() => fixture.allArrived());
        const held = data.lengths.map((_, i) => first + i);
        held.forEach((request, i) => fixture.answerPart(request,
            "HTTP/1.1 200 OK\r\nContent-Length: " + data.lengths[i] + "\r\n\r\n"));
        // The answers begin one after the other.
        tryVerify(() => {
            held.forEach(request => fixture.answerPart(request, "{"));
            return label.text !== "" && label.text.endsWith(data.total);
        });
        verify(/^Receiving \d+ bytes/.test(label.text), label.text);
        verifyView(label.text);
        verify(!label.truncated);
    }
}
