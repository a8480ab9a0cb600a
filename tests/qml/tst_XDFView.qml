import QtQuick
import QtTest
import KvtEditor

ViewTest {
    id: root

    name: "XDFView"

    readonly property string password: "s3cret-word"

    function show(): void {
        app.tab = "xdf";
        render();
    }

    // Has the store answer that and waits until the list shows it.
    function load(answer: var): var {
        show();
        fixture.answerNext(JSON.stringify(answer));
        app.setStatus("");
        app.xdfCatalog();
        tryCompare(app, "status", "Catalog: " + (answer.items ?? []).length + " item(s).");
        render();
        return find("xdfList");
    }

    function items(count: int): var {
        return Array.from({ length: count }, (_, index) => ({
            id: String(index), title: "Definition " + index, os_id: "os" + index, credits: index % 9
        }));
    }

    function rowAt(index: int): var {
        find("xdfList").positionViewAtIndex(index, ListView.Contain);
        render();
        return find("xdfItem" + index);
    }

    // Does something that sends one request, and waits for it.
    function sent(action: var): var {
        const before = fixture.requestCount();
        action();
        tryVerify(() => fixture.requestCount() > before && fixture.allArrived());
        compare(fixture.requestCount(), before + 1);
        return { path: fixture.lastRequestLine().split(" ")[1].split("/api/")[1], body: fixture.lastRequestBody() };
    }

    function test_cardsStandSideBySide() {
        show();
        const left = inWindow(find("xdfWorkspace"));
        const right = inWindow(find("xdfCatalogCard"));
        const view = inWindow(find("xdfView"));
        compare(find("xdfWorkspace").title, "Workspace");
        compare(find("xdfCatalogCard").title, "Identifiers");
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
        const titles = { Email: "Email", Password: "Password", Os: "OS (module 1)",
            Token: "XDF session token", Credits: "Credits" };
        for (const key in titles) {
            compare(find("xdf" + key + "Field").title, titles[key]);
            compare(find("xdf" + key + "Field").locked, key !== "Email" && key !== "Password", key);
        }
        const buttons = { Login: "LOGIN", Register: "REGISTER", Forgot: "FORGOT PASSWORD?",
            Catalog: "Load catalog" };
        for (const key in buttons) {
            compare(find("xdf" + key + "Button").text, buttons[key]);
            compare(find("xdf" + key + "Button").orange, key === "Login", key);
            compare(find("xdf" + key + "Button").enabled, true, key);
        }
        const line = find("catalogLine");
        compare(line.text, "Catalog appears here after login.");
        compare(line.color, VOXTheme.muted);
        verify(line.visible);
    }

    function test_fieldsFollowTheController() {
        show();
        app.xdfEmail = "a@b.example";
        app.xdfPassword = password;
        compare(input("xdfEmailField").text, "a@b.example");
        compare(input("xdfPasswordField").text, password);
        fixture.applyInfo({ modules: [{ title: "ECM", mainOs: "12654321" }] });
        compare(input("xdfOsField").text, "12654321");
    }

    function test_typingReachesTheController() {
        show();
        input("xdfEmailField").forceActiveFocus();
        type("me@b.example");
        compare(app.xdfEmail, "me@b.example");
        input("xdfPasswordField").forceActiveFocus();
        type(password);
        compare(app.xdfPassword, password);
    }

    function test_typingInTheMiddleKeepsTheCursor() {
        show();
        app.xdfEmail = "ac";
        const field = input("xdfEmailField");
        field.forceActiveFocus();
        field.cursorPosition = 1;
        type("bb");
        compare(app.xdfEmail, "abbc");
        compare(field.cursorPosition, 3);
    }

    function test_passwordIsNotShown() {
        show();
        const field = input("xdfPasswordField");
        field.forceActiveFocus();
        type(password);
        compare(field.echoMode, TextInput.Password);
        compare(field.displayText.length, password.length);
        verify(!/[a-z0-9]/.test(field.displayText));
        verify(field.Accessible.passwordEdit);
        verify(fixture.spokenTexts(field).includes("Password"));
        verify(fixture.spokenTexts(input("xdfEmailField")).includes("Email"));
        verify(!input("xdfEmailField").Accessible.passwordEdit);
        keyClick(Qt.Key_A, Qt.ControlModifier);
        keyClick(Qt.Key_C, Qt.ControlModifier);
        input("xdfEmailField").forceActiveFocus();
        keyClick(Qt.Key_V, Qt.ControlModifier);
        verify(!app.xdfEmail.includes(password));
        verify(!app.status.includes(password));
    }

    function test_loginIsSentBy_data() {
        return [
            { tag: "button", act: () => click("xdfLoginButton") },
            { tag: "return-in-email", act: () => pressIn("xdfEmailField", Qt.Key_Return) },
            { tag: "return-in-password", act: () => pressIn("xdfPasswordField", Qt.Key_Return) },
            { tag: "enter-in-password", act: () => pressIn("xdfPasswordField", Qt.Key_Enter) }
        ];
    }

    function pressIn(field: string, key: int): void {
        input(field).forceActiveFocus();
        keyClick(key);
    }

    function test_loginIsSentBy(data) {
        show();
        app.xdfEmail = "me@b.example";
        app.xdfPassword = password;
        fixture.answerNext(JSON.stringify({ session_token: "tok-1", credits: 15 }));
        const request = sent(data.act);
        compare(request.path, "xdf/login.aspx");
        compare(JSON.parse(request.body), { email: "me@b.example", password: password });
        tryCompare(app, "status", "XDF signed in.");
        compare(input("xdfTokenField").text, "tok-1");
        compare(input("xdfCreditsField").text, "15");
    }

    function test_heldReturnSendsOneLogin_data() {
        return [{ tag: "email", field: "xdfEmailField", key: Qt.Key_Return },
            { tag: "email-enter", field: "xdfEmailField", key: Qt.Key_Enter },
            { tag: "password", field: "xdfPasswordField", key: Qt.Key_Return }];
    }

    function test_heldReturnSendsOneLogin(data) {
        show();
        const before = fixture.requestCount();
        input(data.field).forceActiveFocus();
        hold(data.key);
        verifySent(before, 1);
    }

    function test_returnInAReadOnlyFieldSendsNothing() {
        show();
        const before = fixture.requestCount();
        for (const name of ["xdfOsField", "xdfTokenField", "xdfCreditsField"])
            pressIn(name, Qt.Key_Return);
        verifyNothingSent(before);
    }

    function test_failedLoginKeepsTheToken() {
        show();
        fixture.answerNext(JSON.stringify({ token: "tok-2", credits: "7" }));
        app.xdfLogin();
        tryCompare(app, "xdfToken", "tok-2");
        fixture.answerNext(JSON.stringify({ error: "Wrong password" }));
        click("xdfLoginButton");
        tryCompare(app, "status", "Wrong password");
        compare(input("xdfTokenField").text, "tok-2");
        compare(input("xdfCreditsField").text, "7");
    }

    function test_catalogIsAskedForTheFirstModule() {
        show();
        fixture.applyInfo({ modules: [{ title: "ECM", mainOs: "12654321" }, { title: "TCM", mainOs: "2" }] });
        const request = sent(() => click("xdfCatalogButton"));
        compare(request.path, "xdf/catalog.aspx");
        compare(JSON.parse(request.body), { session_token: "", os_id: "12654321" });
    }

    function test_storeSite_data() {
        return [{ tag: "register", button: "xdfRegisterButton" },
            { tag: "forgot", button: "xdfForgotButton" }];
    }

    function test_storeSite(data) {
        show();
        const opened = fixture.openedUrls().length;
        const requests = fixture.requestCount();
        click(data.button);
        compare(fixture.openedUrls().length, opened + 1);
        compare(fixture.openedUrls()[opened], app.storeUrl());
        verify(app.storeUrl().startsWith("https://"));
        compare(app.status, "");
        verifyNothingSent(requests);
    }

    function test_doubleClickOpensOnePage_data() {
        return test_storeSite_data();
    }

    function test_doubleClickOpensOnePage(data) {
        show();
        const opened = fixture.openedUrls().length;
        mouseDoubleClickSequence(find(data.button));
        compare(fixture.openedUrls().length, opened + 1);
    }

    function test_rowShowsItsItem() {
        const list = load({ items: [{ id: 7, title: "Truck 5.3", os_id: "12654321", credits: 3 }] });
        compare(list.count, 1);
        const row = find("xdfItem0");
        compare(find("title", row).text, "Truck 5.3");
        compare(find("title", row).color, VOXTheme.text);
        const about = find("about", row);
        compare(about.text, "12654321  •  3 credits");
        compare(about.color, VOXTheme.muted);
        compare(about.font.pixelSize, 12);
        verify(about.font.pixelSize < find("title", row).font.pixelSize);
        verify(inWindow(about).y >= inWindow(find("title", row)).bottom);
        const button = find("action", row);
        compare(button.text, "Download");
        compare(button.width, 110);
        verify(button.enabled);
        verify(inWindow(button).x >= inWindow(about).right);
        verify(inWindow(row).right - inWindow(button).right <= 12);
        verify(!find("xdfCatalogText").visible);
    }

    function test_rowIsNamedForAssistance() {
        load({ items: [{ id: 7, title: "Truck", os_id: "126", credits: 3 }] });
        const row = find("xdfItem0");
        compare(row.Accessible.role, Accessible.ListItem);
        compare(row.Accessible.name, "Truck, 126  •  3 credits");
        compare(find("action", row).Accessible.role, Accessible.Button);
        compare(find("action", row).Accessible.name, "Download Truck");
        compare(find("xdfList").Accessible.name, "Catalog");
    }

    function test_downloadSendsItsOwnItem() {
        load({ items: items(40) });
        for (const index of [0, 3, 39]) {
            const row = rowAt(index);
            const request = sent(() => mouseClick(find("action", row)));
            compare(request.path, "xdf/download.aspx");
            verify(new RegExp("name=\"id\"\\r\\n\\r\\n" + index + "\\r\\n").test(request.body), request.body);
            verify(request.body.includes("name=\"session_token\""));
            compare(find("xdfList").currentIndex, index);
        }
    }

    function test_clickBesideTheButtonOnlySelects() {
        load({ items: items(3) });
        const before = fixture.requestCount();
        mouseClick(find("xdfItem1"), 20, 20);
        compare(find("xdfList").currentIndex, 1);
        compare(find("xdfItem1").color, VOXTheme.accent(0.22));
        verifyNothingSent(before);
    }

    function test_returnDownloadsTheHighlightedRow() {
        const list = load({ items: items(5) });
        list.forceActiveFocus(Qt.TabFocusReason);
        const before = fixture.requestCount();
        keyClick(Qt.Key_Return);
        keyClick(Qt.Key_Down);
        keyClick(Qt.Key_Down);
        compare(list.currentIndex, 1);
        const request = sent(() => keyClick(Qt.Key_Return));
        compare(fixture.requestCount(), before + 1);
        compare(request.path, "xdf/download.aspx");
        verify(/name="id"\r\n\r\n1\r\n/.test(request.body));
    }

    function test_heldReturnDownloadsOnce() {
        const list = load({ items: items(5) });
        list.forceActiveFocus(Qt.TabFocusReason);
        keyClick(Qt.Key_Down);
        const before = fixture.requestCount();
        hold(Qt.Key_Return);
        verifySent(before, 1);
    }

    function test_doubleClickDownloadsOnce() {
        load({ items: items(3) });
        const before = fixture.requestCount();
        mouseDoubleClickSequence(find("action", find("xdfItem1")));
        verifySent(before, 1);
    }

    function test_answerWithoutItemsIsShownAsItCame() {
        load({ note: "R&D <b>only</b>" });
        const line = find("catalogLine");
        compare(line.text, app.catalogText);
        verify(line.text.includes("R&D <b>only</b>"));
        compare(line.textFormat, Text.PlainText);
        compare(line.font.family, VOXTheme.fixedFamily);
        compare(line.color, VOXTheme.muted);
        verify(line.visible);
        load({ items: items(1) });
        verify(!line.visible);
        verify(app.catalogText !== "");
        load({ items: [] });
        verify(line.visible);
    }

    function test_longAnswerScrollsInItsPlace() {
        const note = Array.from({ length: 300 }, (_, index) => "word" + index);
        const list = load({ note: note });
        const text = find("xdfCatalogText");
        verify(find("catalogLine").text.length <= 4000);
        verify(text.contentHeight > text.height);
        compare(text.contentY, 0);
        verify(inWindow(text).bottom <= inWindow(list).bottom);
        verify(find("catalogLine").width <= text.width - 20);
        list.forceActiveFocus(Qt.TabFocusReason);
        keyClick(Qt.Key_Down);
        verify(text.contentY > 0);
        keyClick(Qt.Key_End);
        compare(text.contentY, text.contentHeight - text.height);
        keyClick(Qt.Key_Home);
        compare(text.contentY, 0);
    }

    function test_longListIsRecycled() {
        const list = load({ items: items(5000) });
        compare(list.count, 5000);
        for (const index of [0, 77, 4999, 2500, 1]) {
            const row = rowAt(index);
            compare(find("title", row).text, "Definition " + index);
            compare(find("about", row).text, "os" + index + "  •  " + index % 9 + " credits");
        }
        let rows = 0;
        for (let i = 0; i < list.contentItem.children.length; ++i)
            rows += list.contentItem.children[i].objectName.startsWith("xdfItem") ? 1 : 0;
        verify(rows > 5 && rows < 120, rows);
    }

    function test_typingKeepsThePlaceInTheList() {
        const list = load({ items: items(5000) });
        list.currentIndex = 3000;
        render();
        const place = list.contentY;
        const row = find("xdfItem3000");
        verify(place > 0);
        input("xdfEmailField").forceActiveFocus();
        type("me@b.example");
        input("xdfPasswordField").forceActiveFocus();
        type("abc");
        render();
        compare(list.contentY, place);
        compare(list.currentIndex, 3000);
        compare(find("xdfItem3000"), row);
        load({ items: items(50) });
        compare(list.contentY, list.originY);
        compare(list.currentIndex, -1);
    }

    function test_longTextsAreShownWholeOnHover() {
        const title = "<b>" + "long name ".repeat(30) + "&";
        load({ items: [{ title: title, os_id: "126", credits: 3 },
            { title: "short", os_id: "1", credits: 1 }] });
        const tip = find("fullText", find("xdfList"));
        const row = find("xdfItem0");
        verify(find("title", row).truncated);
        verify(inWindow(find("title", row)).right <= inWindow(find("action", row)).x);
        mouseMove(row, 20, 20);
        tryVerify(() => tip.visible);
        compare(tip.contentItem.text, title + "\n126  •  3 credits");
        compare(tip.contentItem.textFormat, Text.PlainText);
        mouseMove(find("xdfItem1"), 20, 20);
        tryVerify(() => !tip.visible);
    }

    function test_priceStaysInSightBehindALongOs() {
        load({ items: [{ title: "T", os_id: "1".repeat(5000), credits: 12 }] });
        const about = find("about", find("xdfItem0"));
        verify(about.text.endsWith("…  •  12 credits"));
        compare(about.elide, Text.ElideMiddle);
        compare(about.lineCount, 1);
    }

    function hostile_data(): var {
        return [{ tag: "picture", text: "<img src='" + fixture.address("picture.png") + "'>" },
            { tag: "tag", text: "<b>bold</b>" }, { tag: "ampersand", text: "R&D" },
            { tag: "override", text: "a\u202Eb" }, { tag: "nul", text: "a\u0000b" },
            { tag: "newlines", text: "a\nb", shown: "a b" },
            { tag: "long", text: "x".repeat(1000000), shown: "x".repeat(400) + "…" }];
    }

    function test_hostileItems_data() { return hostile_data(); }

    function test_hostileItems(data) {
        load({ items: [{ id: data.text, title: data.text, os_id: data.text, credits: 1 }] });
        const row = find("xdfItem0");
        const shown = data.shown ?? data.text;
        compare(find("title", row).text, shown);
        compare(find("about", row).text, shown + "  •  1 credits");
        for (const name of ["title", "about"]) {
            compare(find(name, row).textFormat, Text.PlainText);
            compare(find(name, row).lineCount, 1, name);
        }
        mouseMove(row, 20, 20);
        tryVerify(() => row.hovered);
        verifyNothingFetched();
        verify(row.height < 80);
    }

    function test_hostileTokenAndAnswer_data() { return hostile_data(); }

    function test_hostileTokenAndAnswer(data) {
        show();
        fixture.answerNext(JSON.stringify({ token: data.text, credits: data.text }));
        app.xdfLogin();
        tryCompare(app, "status", "XDF signed in.");
        load({ note: data.text });
        compare(find("catalogLine").textFormat, Text.PlainText);
        compare(find("catalogLine").text, app.catalogText);
        verifyNothingFetched();
    }

    function test_itemsOfWrongShapes() {
        const list = load({ items: [null, 3, {}, { credits: "x" }] });
        compare(list.count, 4);
        for (let index = 0; index < 4; ++index) {
            compare(find("title", find("xdfItem" + index)).text, "");
            compare(find("about", find("xdfItem" + index)).text, "  •  0 credits");
        }
    }

    function test_tabKeyWalksInReadingOrder() {
        load({ items: items(3) });
        const order = [input("xdfEmailField"), input("xdfPasswordField"), find("xdfLoginButton"),
            find("xdfRegisterButton"), find("xdfForgotButton"), input("xdfOsField"), find("xdfCatalogButton"),
            input("xdfTokenField"), input("xdfCreditsField"), find("xdfList")];
        order[0].forceActiveFocus(Qt.TabFocusReason);
        for (const item of order) {
            verify(item.activeFocus, item.objectName);
            verify(/\w/.test(fixture.spokenTexts(item)), item.objectName);
            keyClick(Qt.Key_Tab);
        }
        compare(find("xdfList").activeFocus, false);
    }

    function test_smallestWindow() {
        window.width = 1100;
        window.height = 720;
        tryCompare(window.contentItem, "height", 720);
        load({ items: items(20) });
        for (const name of ["xdfLoginButton", "xdfRegisterButton", "xdfForgotButton", "xdfCatalogButton"])
            verify(!find(name).contentItem.truncated, name);
        verify(!find("action", find("xdfItem0")).contentItem.truncated);
        input("xdfCreditsField").forceActiveFocus(Qt.TabFocusReason);
        render();
        verify(inWindow(input("xdfCreditsField")).bottom <= inWindow(find("footer")).top);
        verify(inWindow(find("xdfCatalogCard")).right <= window.width - 20);
    }
}
