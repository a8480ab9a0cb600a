import QtQuick
import QtTest
import KvtEditor

ViewTest {
    id: root

    name: "FeedbackView"

    readonly property var fieldTitles: ({ Name: "Your name", Email: "Email", Description: "Description",
        Id: "Ticket id", Reply: "Reply" })

    function show(): void {
        app.tab = "feedback";
        render();
    }

    function fillIn(texts: var): void {
        for (const key in texts) {
            input("ticket" + key + "Field").forceActiveFocus();
            type(texts[key]);
        }
    }

    // What is sent by this, and answered with that.
    function sent(start: var, answer: var): var {
        const before = fixture.requestCount();
        fixture.answerNext(JSON.stringify(answer ?? {}));
        app.setStatus("Not answered yet.", -1);
        start();
        tryVerify(() => app.status !== "Not answered yet.");
        tryVerify(() => fixture.allArrived());
        compare(fixture.requestCount(), before + 1);
        return JSON.parse(fixture.lastRequestBody());
    }

    // Shows the view with that conversation in it.
    function load(answer: var): var {
        show();
        sent(() => app.loadTicket("1"), answer);
        compare(app.status, "Loaded ticket.");
        render();
        return find("lines", find("ticketLog"));
    }

    function longConversation(messages: int): var {
        return { messages: Array.from({ length: messages }, (_, index) => "message " + index) };
    }

    function lineTexts(): var {
        const lines = find("lines", find("ticketLog"));
        return Array.from({ length: lines.count }, (_, row) => lines.itemAtIndex(row).text);
    }

    function paste(): string {
        const pasted = createTemporaryObject(pasteTarget, window.contentItem);
        pasted.paste();
        return pasted.text;
    }

    function test_numberOfANewTicketStays() {
        show();
        input("ticketIdField").text = "";
        sent(() => app.submitTicket("bug", "", "", "first"), { status: "ok", ticket_id: "T-1" });
        compare(input("ticketIdField").text, "T-1");
        sent(() => app.submitTicket("bug", "", "", "second"), { status: "ok", ticket_id: "T-2" });
        compare(input("ticketIdField").text, "T-1");
        input("ticketIdField").text = "";
        sent(() => app.submitTicket("bug", "", "", "third"), { error: "full" });
        compare(input("ticketIdField").text, "");
    }

    function test_fields() {
        show();
        for (const key in fieldTitles) {
            const field = find("ticket" + key + "Field");
            compare(field.title, fieldTitles[key]);
            compare(field.text, "");
            verify(!field.locked, key);
        }
        const order = ["ticketTypeBox", "ticketNameField", "ticketEmailField", "ticketDescriptionField",
            "ticketSubmitButton", "ticketIdField", "ticketLoadButton", "ticketReplyField",
            "ticketReplyButton"];
        const tops = order.map(name => inWindow(find(name)).y);
        compare(tops, tops.slice().sort((a, b) => a - b));
        compare(inWindow(find("ticketUpdateButton")).y, inWindow(find("ticketLoadButton")).y);
    }

    function test_buttons_data() {
        return [
            { tag: "ticketSubmitButton", text: "Submit ticket", orange: true },
            { tag: "ticketLoadButton", text: "Load conversation", orange: false },
            { tag: "ticketUpdateButton", text: "Check update", orange: false },
            { tag: "ticketReplyButton", text: "Send reply", orange: true }
        ];
    }

    function test_buttons(data) {
        show();
        const button = find(data.tag);
        compare(button.text, data.text);
        compare(button.orange, data.orange);
        verify(button.enabled);
        verify(!button.contentItem.truncated);
    }

    function test_typesOfTickets() {
        show();
        const box = find("ticketTypeBox");
        compare(box.model, ["general", "bug", "feature", "dev"]);
        compare(box.displayText, "general");
        compare(box.height, 40);
        compare(box.background.color, VOXTheme.input);
        compare(box.background.radius, 8);
        compare(box.background.border.color, VOXTheme.border);
        compare(box.contentItem.mapToItem(box, 0, 0).x, 10);
        compare(box.width, input("ticketNameField").width);
        mouseClick(box);
        tryVerify(() => box.popup.opened);
        compare(box.popup.background.color, VOXTheme.panel);
        tryVerify(() => box.popup.contentItem.itemAtIndex(2));
        mouseClick(box.popup.contentItem.itemAtIndex(2));
        tryVerify(() => !box.popup.visible);
        compare(box.displayText, "feature");
    }

    function test_submit_data() {
        return ["general", "bug", "feature", "dev"].map(tag => ({ tag: tag }));
    }

    function test_submit(data) {
        show();
        const texts = { Name: " Ann ", Email: "ann@example.invalid", Description: "It is slow." };
        fillIn(texts);
        find("ticketTypeBox").currentIndex = find("ticketTypeBox").model.indexOf(data.tag);
        const ticket = sent(() => click("ticketSubmitButton"), { status: "ok", ticket_id: "T-7" });
        compare(ticket, { type: data.tag, name: " Ann ", email: "ann@example.invalid",
            description: "It is slow.", version: "4.0.2", os: "Windows" });
        compare(fixture.lastRequestLine(), "POST /api/feedback.aspx HTTP/1.1");
        compare(app.status, "Ticket: T-7");
        for (const key in texts)
            compare(find("ticket" + key + "Field").text, texts[key]);
        compare(find("ticketTypeBox").displayText, data.tag);
    }

    function test_submitWithEmptyFields() {
        show();
        const ticket = sent(() => click("ticketSubmitButton"), { error: "Say what is wrong." });
        compare(ticket.type, "general");
        compare(ticket.name, "Windows user");
        verify(ticket.email.endsWith(".invalid"), ticket.email);
        compare(ticket.description, "");
        compare(app.status, "Say what is wrong.");
        compare(app.statusOK, 0);
    }

    function test_load_data() {
        return [{ tag: "button", start: () => click("ticketLoadButton") },
            { tag: "return", start: () => keyClick(Qt.Key_Return) },
            { tag: "enter", start: () => keyClick(Qt.Key_Enter) }];
    }

    function test_load(data) {
        show();
        fillIn({ Id: " T-7 " });
        compare(sent(data.start), { action: "history", ticket_id: " T-7 " });
        compare(fixture.lastRequestLine(), "POST /api/feedback_reply.aspx HTTP/1.1");
        compare(app.status, "Loaded ticket.");
        compare(find("ticketIdField").text, " T-7 ");
    }

    function test_reply() {
        show();
        fillIn({ Id: "T-7", Reply: " Thank you. " });
        compare(sent(() => click("ticketReplyButton"), { error: "Closed." }),
            { action: "reply", ticket_id: "T-7", message: " Thank you. " });
        compare(fixture.lastRequestLine(), "POST /api/feedback_reply.aspx HTTP/1.1");
        compare(app.status, "Closed.");
        compare(find("ticketReplyField").text, " Thank you. ");
        compare(find("ticketIdField").text, "T-7");
    }

    function test_replyShowsTheConversationAnew() {
        load({ messages: ["first"] });
        fillIn({ Id: "T-7", Reply: "second" });
        fixture.answerNext(JSON.stringify({ ok: true }));
        fixture.answerNext(JSON.stringify({ messages: ["first", "second"] }));
        click("ticketReplyButton");
        tryVerify(() => lineTexts().includes("        \"second\""));
        compare(JSON.parse(fixture.lastRequestBody()), { action: "history", ticket_id: "T-7" });
    }

    function test_heldReturnLoadsOnce_data() {
        return [{ tag: "return", key: Qt.Key_Return }, { tag: "enter", key: Qt.Key_Enter }];
    }

    function test_heldReturnLoadsOnce(data) {
        show();
        fillIn({ Id: "T-7" });
        const before = fixture.requestCount();
        hold(data.key);
        verifySent(before, 1);
    }

    function test_doubleClickSendsOnce_data() {
        return [{ tag: "ticketSubmitButton" }, { tag: "ticketReplyButton" }];
    }

    function test_doubleClickSendsOnce(data) {
        show();
        fillIn({ Description: "It is slow.", Id: "T-7", Reply: "Thank you." });
        const before = fixture.requestCount();
        mouseDoubleClickSequence(find(data.tag));
        verifySent(before, 1);
    }

    function test_heldSpaceSendsOnce_data() {
        return [{ tag: "ticketSubmitButton" }, { tag: "ticketReplyButton" }, { tag: "ticketLoadButton" }];
    }

    function test_heldSpaceSendsOnce(data) {
        show();
        fillIn({ Description: "It is slow.", Id: "T-7", Reply: "Thank you." });
        const before = fixture.requestCount();
        find(data.tag).forceActiveFocus(Qt.TabFocusReason);
        hold(Qt.Key_Space);
        verifySent(before, 1);
    }

    function test_longTextsGoOutWhole_data() {
        return [{ tag: "ticketSubmitButton", texts: { Description: "" }, field: "ticketDescriptionField" },
            { tag: "ticketReplyButton", texts: { Id: "T-7" }, field: "ticketReplyField" }];
    }

    function test_longTextsGoOutWhole(data) {
        show();
        fillIn(data.texts);
        app.copyText("x".repeat(40000) + " the end", "");
        input(data.field).forceActiveFocus();
        keyClick(Qt.Key_V, Qt.ControlModifier);
        click(data.tag);
        tryVerify(() => fixture.requestBodies().includes("x".repeat(40000) + " the end"));
    }

    function test_returnInTheReplySendsNothing() {
        show();
        fillIn({ Id: "T-7", Reply: "x" });
        const asked = fixture.requestCount();
        keyClick(Qt.Key_Return);
        keyClick(Qt.Key_Enter);
        compare(find("ticketReplyField").text, "x");
        verifyNothingSent(asked);
    }

    function test_checkUpdate() {
        show();
        const before = fixture.requestCount();
        fixture.answerNext(JSON.stringify({ latest_version: "4.0.2" }));
        click("ticketUpdateButton");
        compare(app.status, "Checking for updates...");
        compare(lineTexts(), ["Checking for updates..."]);
        tryCompare(app, "status", "You are running the latest version (4.0.2).");
        tryVerify(() => fixture.allArrived());
        compare(fixture.requestCount(), before + 1);
        verify(fixture.lastRequestLine().startsWith("GET /api/updates/kvteditornew/update.json"));
        compare(lineTexts(), ["You are running the latest version (4.0.2)."]);
    }

    function test_logFrame() {
        show();
        const log = find("ticketLog");
        compare(log.color, VOXTheme.input);
        compare(log.radius, 8);
        compare(log.border.color, VOXTheme.border);
        app.setStatus("Text.", 1);
        render();
        const line = inWindow(find("lines", log).itemAtIndex(0));
        compare(line.x, inWindow(log).x + 10);
        compare(line.y, inWindow(log).y + 10);
    }

    function test_logShowsTheStatusFirst() {
        show();
        app.setStatus("first\nsecond", 0);
        compare(lineTexts(), ["first", "second"]);
        app.setStatus("third", 1);
        compare(lineTexts(), ["third"]);
        app.setStatus("", -1);
        compare(lineTexts(), []);
    }

    function test_logShowsTheConversationThen() {
        load({ status: "ok", messages: [{ text: "Hello" }] });
        const expected = ["{", "    \"messages\": [", "        {", "            \"text\": \"Hello\"",
            "        }", "    ],", "    \"status\": \"ok\"", "}"];
        compare(lineTexts(), expected);
        app.setStatus("Saved.", 1);
        compare(lineTexts(), expected);
        compare(find("lines", find("ticketLog")).itemAtIndex(0).font.family, VOXTheme.fixedFamily);
    }

    function test_longLinesWrap() {
        const lines = load({ text: "word ".repeat(150), unbroken: "x".repeat(900) });
        for (const row of [1, 2]) {
            const line = lines.itemAtIndex(row);
            verify(line.lineCount > 1);
            verify(line.contentWidth <= line.width);
            verify(inWindow(line).right <= inWindow(find("ticketLog")).right - 10);
        }
    }

    function test_longConversationIsMadeOfRowsInSight() {
        const messages = 60000;
        const lines = load(longConversation(messages));
        compare(lines.count, messages + 4);
        compare(lines.contentY, lines.originY);
        const log = find("ticketLog");
        log.forceActiveFocus(Qt.TabFocusReason);
        keyClick(Qt.Key_End);
        render();
        compare(lines.itemAtIndex(lines.count - 1).text, "}");
        fuzzyCompare(inWindow(lines.itemAtIndex(lines.count - 1)).bottom, inWindow(lines).bottom, 2);
        compare(lines.itemAtIndex(0), null);
        keyClick(Qt.Key_Home);
        render();
        compare(lines.itemAtIndex(2).text, "        \"message 0\",");
        let rows = 0;
        for (let i = 0; i < lines.contentItem.children.length; ++i)
            rows += lines.contentItem.children[i].line !== undefined ? 1 : 0;
        verify(rows > 10 && rows < 300, rows);
    }

    function test_keysScroll() {
        const lines = load(longConversation(500));
        find("ticketLog").forceActiveFocus(Qt.TabFocusReason);
        const place = () => lines.contentY - lines.originY;
        keyClick(Qt.Key_Up);
        compare(place(), 0);
        keyClick(Qt.Key_Down);
        compare(place(), 40);
        keyClick(Qt.Key_PageDown);
        fuzzyCompare(place(), lines.height, 1);
        keyClick(Qt.Key_PageUp);
        fuzzyCompare(place(), 40, 1);
        keyClick(Qt.Key_Up);
        compare(place(), 0);
        keyClick(Qt.Key_End);
        const end = place();
        verify(end > lines.height);
        keyClick(Qt.Key_Down);
        fuzzyCompare(place(), end, 1);
    }

    function test_newTextStartsAtItsTop() {
        const lines = load(longConversation(500));
        find("ticketLog").forceActiveFocus(Qt.TabFocusReason);
        keyClick(Qt.Key_End);
        render();
        load(longConversation(400));
        compare(lines.contentY, lines.originY);
        verify(lines.itemAtIndex(0));
    }

    function test_sameTextKeepsItsPlace() {
        const lines = load(longConversation(500));
        lines.contentY += 1000;
        render();
        const place = lines.contentY;
        load(longConversation(500));
        compare(lines.contentY, place);
    }

    function test_copying_data() {
        return [{ tag: "conversation", answer: longConversation(3000), label: "Conversation" },
            { tag: "status", label: "Log" }];
    }

    function test_copying(data) {
        show();
        if (data.answer)
            load(data.answer);
        else
            app.setStatus("One.\nTwo.", 1);
        const text = find("ticketLog").text;
        compare(text, data.answer ? app.threadText : "One.\nTwo.");
        mouseClick(find("ticketLog"));
        compare(window.activeFocusItem, find("ticketLog"));
        keyClick(Qt.Key_C, Qt.ControlModifier);
        compare(app.status, data.label + " copied.");
        compare(paste(), text);
    }

    function test_hostileTexts_data() {
        return [
            { tag: "picture", text: "<img src='" + fixture.address("picture.png") + "'>" },
            { tag: "tag", text: "<b>bold</b>" },
            { tag: "ampersand", text: "R&D" },
            { tag: "override", text: "a\u202Eb" },
            { tag: "nul", text: "a\u0000b" },
            { tag: "long", text: "x".repeat(1000000) }
        ];
    }

    function test_hostileTexts(data) {
        show();
        app.setStatus(data.text, 0);
        render();
        const log = find("ticketLog");
        compare(log.text, data.text);
        const first = find("lines", log).itemAtIndex(0);
        compare(first.text, data.text.slice(0, 1000));
        compare(first.textFormat, Text.PlainText);
        const lines = load({ text: data.text });
        compare(lines.itemAtIndex(1).textFormat, Text.PlainText);
        verify(app.threadText.startsWith("{\n    \"text\": \""));
        verifyNothingFetched();
    }

    function test_tabKeyWalksInReadingOrder() {
        show();
        const order = [find("ticketTypeBox"), input("ticketNameField"), input("ticketEmailField"),
            input("ticketDescriptionField"), find("ticketSubmitButton"), input("ticketIdField"),
            find("ticketLoadButton"), find("ticketUpdateButton"), input("ticketReplyField"),
            find("ticketReplyButton"), find("ticketLog")];
        order[0].forceActiveFocus(Qt.TabFocusReason);
        for (const item of order) {
            compare(window.activeFocusItem, item, item.objectName);
            verify(item.Accessible.name !== "", item.objectName);
            if (item === find("ticketLog"))
                compare(item.border.color, VOXTheme.orangeBright);
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
        show();
        const end = inWindow(find("footer")).top - 20;
        for (const item of [find("ticketTypeBox"), find("ticketUpdateButton"), find("ticketReplyButton"),
                find("ticketLog")]) {
            item.forceActiveFocus(Qt.TabFocusReason);
            render();
            verify(inWindow(item).bottom <= end, item);
            verify(inWindow(item).right <= window.width - 20, item);
        }
        verify(!find("ticketLoadButton").contentItem.truncated);
        verify(!find("ticketUpdateButton").contentItem.truncated);
    }

    Component {
        id: pasteTarget

        TextEdit {}
    }
}
