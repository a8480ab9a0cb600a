import QtQuick
import QtTest
import KvtEditor

ViewTest {
    name: "Identifiers"

    readonly property var twoModules: [
        { title: "Engine", vin: "VIN1", serial: "S1", mainOs: "111",
          rows: [{ label: "Segment", value: "E1" }] },
        { title: "Transmission", mainOs: "222",
          rows: [{ label: "Segment", value: "T1" }, { label: "Cal", value: "T2" }] }
    ]

    function show(answer: var): void {
        fixture.applyInfo(answer);
        render();
    }

    function list(): var {
        return find("lines", find("moduleList"));
    }

    // What a line shows, its caption aside from its value; nothing for one that shows nothing.
    function shown(line: var): string {
        const title = find("moduleTitle", line);
        if (title.visible)
            return title.text;
        const caption = find("caption", line);
        return caption.visible ? caption.text + "=" + find("field", line).text : "";
    }

    function lineText(index: int): string {
        const line = list().itemAtIndex(index);
        verify(line, "line " + index + " does not exist");
        return shown(line);
    }

    function allLines(): var {
        return Array.from({ length: list().count }, (_, index) => lineText(index));
    }

    function lineWithKeyboard(): int {
        const line = list().currentItem;
        return line && find("field", line).activeFocus ? list().currentIndex : -1;
    }

    function isInSight(line: int): bool {
        const lines = list();
        const place = inItem(lines, lines.itemAtIndex(line));
        return place.y >= -0.5 && place.y + place.height <= lines.height + 0.5;
    }

    function isAtTheTop(): bool {
        return inItem(list(), list().itemAtIndex(0)).y === 0;
    }

    function inItem(outer: var, item: var): rect {
        return item.mapToItem(outer, 0, 0, item.width, item.height);
    }

    function manyModules(count: int): var {
        const module = index => ({ title: "Module " + index, mainOs: "OS" + index });
        return Array.from({ length: count }, (_, index) => module(index));
    }

    function rowsOf(count: int): var {
        return Array.from({ length: count }, (_, index) => ({ label: "Row " + index, value: "V" + index }));
    }

    function test_longValueIsCopiedWhole() {
        app.tab = "main";
        fixture.openFile("truck.kvt", 64);
        const told = "1.0 " + "x".repeat(40000);
        fixture.applyInfo({ softwareVersion: told });
        render();
        mouseClick(find("copyArea", find("versionField")));
        compare(app.status, "Version copied.");
        verify(fixture.clipboardText() === told);
    }

    function test_field_data() {
        return [
            { tag: "vin", title: "VIN" }, { tag: "serial", title: "Serial Number" },
            { tag: "mainOS", title: "Main OS" }, { tag: "system", title: "System" },
            { tag: "fuel", title: "Fuel System" },
            { tag: "speedometer", title: "Speedometer" }, { tag: "engineDiag", title: "Engine Diag" },
            { tag: "engineOp", title: "Engine Op" }, { tag: "interfaceID", title: "Interface ID" }
        ];
    }

    function test_field(data) {
        const field = find(data.tag + "Field");
        compare(field.title, data.title);
        compare(field.locked, false);
        input(data.tag + "Field").forceActiveFocus();
        type("ab");
        compare(app[data.tag], "ab");
        app[data.tag] = "from elsewhere";
        compare(field.text, "from elsewhere");
        // The binding outlives the typing.
        type("!");
        verify(app[data.tag].includes("!"));
        app[data.tag] = "again";
        compare(field.text, "again");
    }

    function test_typingKeepsTheCursorsPlace() {
        app.vin = "ABCD";
        const field = input("vinField");
        field.forceActiveFocus();
        field.cursorPosition = 2;
        type("xy");
        compare(app.vin, "ABxyCD");
        compare(field.cursorPosition, 4);
    }

    function test_answerAboutAnotherFieldLeavesTheTypingAlone() {
        const field = input("vinField");
        field.forceActiveFocus();
        type("ABCD");
        field.cursorPosition = 1;
        fixture.applyInfo({ serial: "777" });
        compare(find("serialField").text, "777");
        compare(field.text, "ABCD");
        compare(field.cursorPosition, 1);
    }

    function test_faceFollowsTheNumberOfModules_data() {
        return [
            { tag: "none", modules: [], fields: true },
            { tag: "one", modules: twoModules.slice(0, 1), fields: true },
            { tag: "two", modules: twoModules, fields: false }
        ];
    }

    function test_faceFollowsTheNumberOfModules(data) {
        fixture.applyInfo({ modules: data.modules });
        compare(find("identifierFields").visible, data.fields);
        compare(find("moduleList").visible, !data.fields);
    }

    function test_everyModuleShowsItsOwn() {
        show({ modules: twoModules, interfaceId: "77" });
        compare(allLines(), ["Engine", "VIN=VIN1", "SERIAL NUMBER=S1", "MAIN OS=111", "SEGMENT=E1",
            "Transmission", "MAIN OS=222", "SEGMENT=T1", "CAL=T2", "INTERFACE ID=77"]);
    }

    function test_mainOsIsShownEvenWhenEmpty() {
        show({ modules: [{ title: "A" }, { title: "B" }] });
        compare(allLines(), ["A", "MAIN OS=", "B", "MAIN OS=", ""]);
    }

    function test_linesLooks() {
        show({ modules: twoModules, interfaceId: "77" });
        const line = index => list().itemAtIndex(index);
        const title = find("moduleTitle", line(5));
        compare(title.color, VOXTheme.orange);
        compare(title.font.bold, true);
        compare(title.font.pixelSize, 13);
        compare(title.Accessible.role, Accessible.Heading);
        compare(title.Accessible.name, "Transmission");
        const rule = find("rule", line(5));
        compare(rule.height, 1);
        compare(rule.color, VOXTheme.border);
        const field = find("field", line(6));
        compare(field.readOnly, true);
        compare(field.Accessible.role, Accessible.EditableText);
        compare(field.Accessible.name, "Main OS");
        compare(list().Accessible.role, Accessible.List);

        // Blocks stand further apart than the lines of one.
        const top = (index, name) => inItem(list(), find(name, line(index))).y;
        const bottom = index => top(index, "field") + find("field", line(index)).height;
        compare(top(0, "moduleTitle"), 0);
        compare(top(5, "moduleTitle") - bottom(4), 18);
        compare(top(5, "rule") - top(5, "moduleTitle") - title.height, 10);
        compare(top(6, "caption") - top(5, "rule") - 1, 10);
        compare(top(7, "caption") - bottom(6), 10);
        compare(top(9, "caption") - bottom(8), 18);
    }

    function test_interfaceIdOfSeveralModulesOnlyWhenThereIsOne() {
        show({ modules: twoModules });
        const before = list().contentHeight;
        compare(lineText(9), "");
        app.interfaceID = "77";
        render();
        compare(lineText(9), "INTERFACE ID=77");
        tryVerify(() => list().contentHeight > before + 18);
    }

    function test_moduleListKeepsItsPlace() {
        window.height = 720;
        show({ modules: twoModules.concat(twoModules) });
        const lines = list();
        tryVerify(() => lines.contentHeight > lines.height + 50);
        lines.contentY = 50;
        app.fuel = "Diesel";
        app.interfaceID = "77";
        const first = lines.itemAtIndex(1);
        fixture.applyInfo({ fuel: "Petrol" });
        const others = JSON.parse(JSON.stringify(twoModules.concat(twoModules)));
        others[0].vin = "VIN2";
        show({ modules: others });
        compare(lines.contentY, 50);
        compare(lines.itemAtIndex(1), first);
        compare(shown(first), "VIN=VIN2");
    }

    function test_listOfAnotherShapeStartsAtItsTop() {
        window.height = 720;
        show({ modules: manyModules(40) });
        list().contentY = 500;
        show({ modules: manyModules(50) });
        compare(list().contentY, 0);
        compare(lineText(0), "Module 0");
    }

    function test_placeOutlivesAnotherView() {
        show({ modules: manyModules(40) });
        list().contentY = 500;
        app.tab = "tools";
        fixture.applyInfo({ modules: manyModules(40).reverse() });
        app.tab = "main";
        render();
        compare(list().contentY, 500);
        list().positionViewAtBeginning();
        compare(lineText(0), "Module 39");
    }

    function test_onlyLinesInSightExist_data() {
        const large = { title: "Long", mainOs: "1", rows: rowsOf(100000) };
        const small = { title: "Short", mainOs: "2" };
        return [
            { tag: "modules", modules: manyModules(100000), count: 200001,
              start: ["Module 0", "MAIN OS=OS0"], end: ["Module 99999", "MAIN OS=OS99999"] },
            { tag: "rows", modules: [small, large], count: 100005,
              start: ["Short", "MAIN OS=2"], end: ["ROW 99998=V99998", "ROW 99999=V99999"] },
            { tag: "rows-first", modules: [large, small], count: 100005,
              start: ["Long", "MAIN OS=1"], end: ["Short", "MAIN OS=2"] }
        ];
    }

    function test_onlyLinesInSightExist(data) {
        show({ modules: data.modules, interfaceId: "77" });
        const lines = list();
        const existing = () => lines.contentItem.children.length;
        compare(lines.count, data.count);
        compare([lineText(0), lineText(1)], data.start);
        verify(existing() < 80, existing() + " lines");
        lines.positionViewAtIndex(Math.floor(data.count / 2), ListView.Center);
        render();
        verify(existing() < 80, existing() + " lines");
        lines.currentItem.forceActiveFocus();
        keyClick(Qt.Key_End, Qt.ControlModifier);
        render();
        const last = data.count - 1;
        compare([lineText(last - 2), lineText(last - 1)], data.end);
        compare(lineText(last), "INTERFACE ID=77");
        verify(isInSight(last));
        verify(existing() < 80, existing() + " lines");
        lines.positionViewAtBeginning();
        render();
        compare([lineText(0), lineText(1)], data.start);
        verify(isAtTheTop());
        verify(existing() < 80, existing() + " lines");
    }

    function test_reusedLinesShowWhatTheyBecome() {
        const vin = index => index % 2 ? "V" + index : "";
        const module = index => ({ title: "M" + index, vin: vin(index), mainOs: "OS" + index });
        show({ modules: Array.from({ length: 200 }, (_, index) => module(index)) });
        const lines = list();
        // Half of the modules have a VIN: five lines for two of them.
        for (const line of [0, 250, 498, 120, 5]) {
            lines.positionViewAtIndex(line, ListView.Beginning);
            render();
            const first = Math.floor(line / 5) * 2;
            const expected = ["M" + first, "MAIN OS=OS" + first, "M" + (first + 1), "VIN=V" + (first + 1),
                "MAIN OS=OS" + (first + 1)];
            compare(lineText(line), expected[line % 5]);
            verify(isInSight(line));
        }
    }

    function test_tabWalksTheFieldsAndLeaves() {
        window.height = 720;
        show({ modules: twoModules.concat(twoModules) });
        find("sendToDevButton").forceActiveFocus();
        const visited = [];
        for (let i = 0; i < 14; ++i) {
            keyClick(Qt.Key_Tab);
            const line = lineWithKeyboard();
            visited.push(line);
            verify(isInSight(line));
        }
        compare(visited, [1, 2, 3, 4, 6, 7, 8, 10, 11, 12, 13, 15, 16, 17]);
        keyClick(Qt.Key_Tab);
        compare(lineWithKeyboard(), -1);
        keyClick(Qt.Key_Tab, Qt.ShiftModifier);
        compare(lineWithKeyboard(), 17);
        for (let i = 0; i < 13; ++i)
            keyClick(Qt.Key_Tab, Qt.ShiftModifier);
        compare(lineWithKeyboard(), 1);
        verify(isAtTheTop());
        keyClick(Qt.Key_Tab, Qt.ShiftModifier);
        verify(find("sendToDevButton").activeFocus);
    }

    function test_keysScroll() {
        show({ modules: manyModules(1000), interfaceId: "77" });
        find("sendToDevButton").forceActiveFocus();
        keyClick(Qt.Key_Tab);
        compare(lineWithKeyboard(), 1);
        keyClick(Qt.Key_Tab);
        keyClick(Qt.Key_Backtab);
        compare(lineWithKeyboard(), 1);
        keyClick(Qt.Key_Down);
        compare(lineWithKeyboard(), 3);
        keyClick(Qt.Key_Up);
        compare(lineWithKeyboard(), 1);
        keyClick(Qt.Key_Up);
        compare(lineWithKeyboard(), 1);
        keyClick(Qt.Key_PageDown);
        const page = lineWithKeyboard();
        verify(page > 3);
        keyClick(Qt.Key_PageDown);
        compare(lineWithKeyboard(), 2 * page - 1);
        verify(list().contentY > 0);
        keyClick(Qt.Key_End, Qt.ControlModifier);
        compare(lineWithKeyboard(), 2000);
        verify(isInSight(2000));
        keyClick(Qt.Key_Home, Qt.ControlModifier);
        compare(lineWithKeyboard(), 1);
        verify(isAtTheTop());
    }

    function test_keyboardStaysWithItsLine() {
        show({ modules: manyModules(1000) });
        mouseClick(find("field", list().itemAtIndex(3)));
        compare(lineWithKeyboard(), 3);
        list().positionViewAtIndex(1500, ListView.Beginning);
        render();
        compare(lineWithKeyboard(), 3);
        keyClick(Qt.Key_Tab);
        compare(lineWithKeyboard(), 5);
        verify(isInSight(5));
    }

    function test_wheelAndBarScroll() {
        show({ modules: manyModules(1000) });
        render();
        const lines = list();
        const bar = find("scrollBar", find("moduleList"));
        verify(bar.visible);
        compare(bar.background.color, VOXTheme.input);
        mouseWheel(lines, 50, 50, 0, -120);
        tryVerify(() => lines.contentY > 0);
        mouseDrag(bar, bar.width / 2, 10, 0, bar.height, Qt.LeftButton, Qt.NoModifier);
        render();
        compare(lineText(1999), "MAIN OS=OS999");
        verify(isInSight(1999));
    }

    function clipboard(): string {
        const field = input("devMessageField");
        field.clear();
        field.paste();
        return field.text;
    }

    function test_clickOnTheCaptionCopies() {
        show({ modules: twoModules, interfaceId: "77" });
        const expected = [[1, "VIN", "VIN1"], [2, "Serial Number", "S1"], [3, "Main OS", "111"],
                          [4, "Segment", "E1"], [9, "Interface ID", "77"]];
        for (const [line, title, value] of expected) {
            mouseClick(find("copyArea", list().itemAtIndex(line)));
            compare(app.status, title + " copied.");
            compare(app.statusOK, 1);
            compare(clipboard(), value);
        }
        compare(lineWithKeyboard(), -1);
    }

    function test_captionSaysThatItCopies() {
        show({ modules: twoModules });
        const line = list().itemAtIndex(1);
        const area = find("copyArea", line);
        const caption = find("caption", line);
        compare(area.cursorShape, Qt.PointingHandCursor);
        // Only where there is text.
        verify(area.width > 10 && area.width <= caption.contentWidth + 0.5);
        compare(area.height, caption.height);
        compare(findChild(area, "copyTip"), null);
        mouseMove(area);
        tryVerify(() => find("copyTip", area).opened);
        compare(find("copyTip", area).fullText, "Click to copy");
        mouseMove(find("sendToDevButton"));
        tryVerify(() => findChild(area, "copyTip") === null);
    }

    function test_copyKeyCopiesTheWholeValue() {
        show({ modules: twoModules });
        mouseClick(find("field", list().itemAtIndex(1)));
        keyClick(Qt.Key_C, Qt.ControlModifier);
        compare(app.status, "VIN copied.");
        compare(clipboard(), "VIN1");
    }

    function test_copyKeyCopiesTheSelectionOnly() {
        show({ modules: twoModules });
        const field = find("field", list().itemAtIndex(1));
        field.forceActiveFocus();
        field.select(1, 3);
        const before = app.status;
        keyClick(Qt.Key_C, Qt.ControlModifier);
        compare(app.status, before);
        compare(clipboard(), "IN");
    }

    function test_emptyValuesCopyNothing() {
        show({ modules: [{ title: "A" }, { title: "B" }] });
        const line = list().itemAtIndex(1);
        compare(find("caption", line).text, "MAIN OS");
        compare(find("copyArea", line).visible, false);
        app.copyText("before", "Test");
        mouseClick(find("caption", line), 5, 5);
        find("field", line).forceActiveFocus();
        keyClick(Qt.Key_C, Qt.ControlModifier);
        compare(app.status, "Test copied.");
        compare(clipboard(), "before");
    }

    function test_editableFieldsCopyNothingByThemselves() {
        app.vin = "ABCD";
        compare(find("copyArea", find("vinField")).visible, false);
        input("vinField").forceActiveFocus();
        input("vinField").deselect();
        const before = app.status;
        keyClick(Qt.Key_C, Qt.ControlModifier);
        compare(app.status, before);
    }

    function test_reusedLineCopiesWhatItShows() {
        show({ modules: manyModules(1000) });
        list().positionViewAtIndex(1501, ListView.Beginning);
        render();
        mouseClick(find("copyArea", list().itemAtIndex(1501)));
        compare(clipboard(), "OS750");
    }

    function test_factsOfTheFileCopyToo() {
        fixture.openFile("a.kvt", 16);
        fixture.applyInfo({ created: "2024", softwareVersion: "4.0.2" });
        const expected = [["fileNameField", "Filename", "a.kvt"], ["createdField", "Created", "2024"],
                          ["versionField", "Version", "4.0.2"]];
        for (const [name, title, value] of expected) {
            render();
            mouseClick(find("copyArea", find(name)));
            compare(app.status, title + " copied.");
            compare(clipboard(), value);
        }
    }

    function test_anotherFileBringsTheFieldsBack() {
        fixture.applyInfo({ modules: twoModules });
        fixture.openFile("b.kvt", 16);
        compare(find("identifierFields").visible, true);
        compare(find("vinField").text, "");
    }

    function showIn(view: string): void {
        app.tab = view;
        render();
    }

    function inPanel(name: string, view: string): var {
        return find(name, find(view + "View"));
    }

    function isInside(item: var, ancestor: var): bool {
        while (item && item !== ancestor)
            item = item.parent;
        return item === ancestor;
    }

    function verifyKeyboardIn(name: string, view: string): void {
        const face = inPanel(name, view);
        const focused = window.activeFocusItem;
        verify(focused.visible && focused.enabled);
        verify(isInside(focused, face), "the keyboard is in " + focused.objectName);
    }

    // Everything the fields may change.
    function identifiers(): string {
        return test_field_data().map(data => app[data.tag]).join("|");
    }

    function panels_data(): var {
        return [{ tag: "main" }, { tag: "convert" }, { tag: "segments" }];
    }

    function test_typingEndsWhenTheFieldsGo_data() { return panels_data(); }

    function test_typingEndsWhenTheFieldsGo(data) {
        showIn(data.tag);
        for (const field of ["vin", "interfaceID"]) {
            mouseClick(find("field", inPanel(field + "Field", data.tag)));
            type("AB");
            verify(app[field].includes("AB"));
            fixture.applyInfo({ modules: twoModules });
            const before = identifiers();
            type("CD");
            keyClick(Qt.Key_Backspace);
            keyClick(Qt.Key_Delete);
            compare(identifiers(), before);
            render();
            verifyKeyboardIn("moduleList", data.tag);
            keyClick(Qt.Key_Tab);
            verifyKeyboardIn("moduleList", data.tag);
            type("EF");
            compare(identifiers(), before);
            fixture.applyInfo({ modules: twoModules.slice(0, 1) });
            // Back in the field that it left.
            verify(find("field", inPanel(field + "Field", data.tag)).activeFocus);
            type("GH");
            verify(app[field].includes("GH"));
        }
    }

    function test_keyboardLeavesTheModulesWithThem_data() { return panels_data(); }

    function test_keyboardLeavesTheModulesWithThem(data) {
        fixture.applyInfo({ modules: twoModules });
        showIn(data.tag);
        const lines = inPanel("lines", data.tag);
        mouseClick(find("field", lines.itemAtIndex(2)));
        verifyKeyboardIn("moduleList", data.tag);
        fixture.openFile("one.kvt", 16);
        verifyKeyboardIn("identifierFields", data.tag);
        verify(find("field", inPanel("vinField", data.tag)).activeFocus);
        keyClick(Qt.Key_Tab);
        verify(find("field", inPanel("serialField", data.tag)).activeFocus);
        fixture.applyInfo({ modules: twoModules });
        render();
        verifyKeyboardIn("moduleList", data.tag);
    }

    function test_keyboardElsewhereStaysThere() {
        const button = find("sendToDevButton");
        button.forceActiveFocus();
        for (const count of [2, 1, 2]) {
            fixture.applyInfo({ modules: twoModules.slice(0, count) });
            render();
            compare(window.activeFocusItem, button);
        }
        keyClick(Qt.Key_Tab);
        compare(lineWithKeyboard(), 1);
    }

    // The control that had the keyboard before the hex editor gets it back, unless it has gone meanwhile.
    function test_facesChangeBehindTheHexEditor() {
        fixture.openFile("one.kvt", 16);
        input("vinField").forceActiveFocus();
        keyClick(Qt.Key_H, Qt.ControlModifier);
        verify(app.showHex);
        fixture.applyInfo({ modules: twoModules });
        const before = identifiers();
        keyClick(Qt.Key_Escape);
        verify(!app.showHex);
        type("CD");
        compare(identifiers(), before);
        verifyKeyboardIn("moduleList", "main");
    }

    // Longer than what most fields take.
    function longSerial(): string {
        return "<" + "x".repeat(39998) + ">";
    }

    function test_longValueIsEditedWhole_data() {
        return [
            { tag: "delete-first", keys: [Qt.Key_Home, Qt.Key_Delete], expected: text => text.slice(1) },
            { tag: "delete-last", keys: [Qt.Key_End, Qt.Key_Left, Qt.Key_Delete],
              expected: text => text.slice(0, -1) },
            { tag: "backspace-last", keys: [Qt.Key_End, Qt.Key_Backspace],
              expected: text => text.slice(0, -1) },
            { tag: "typed-at-the-end", keys: [Qt.Key_End, Qt.Key_7], expected: text => text + "7" },
            { tag: "two", keys: [Qt.Key_Home, Qt.Key_Delete, Qt.Key_End, Qt.Key_Backspace],
              expected: text => text.slice(1, -1) },
            { tag: "all", keys: [Qt.Key_Delete], select: true, expected: () => "" }
        ];
    }

    function test_longValueIsEditedWhole(data) {
        const serial = longSerial();
        fixture.applyInfo({ serial: serial });
        const field = input("serialField");
        verify(field.text === serial.slice(0, 32767));
        field.forceActiveFocus();
        if (data.select)
            keyClick(Qt.Key_A, Qt.ControlModifier);
        for (const key of data.keys)
            keyClick(key);
        const expected = data.expected(serial);
        verify(app.serial === expected, app.serial.length + " characters");
        verify(field.text === expected);
        // Beside the field only its beginning is laid out, and shown.
        input("vinField").forceActiveFocus();
        verify(app.serial === expected);
        verify(field.text === expected.slice(0, 32767));
        compare(field.cursorPosition, 0);
    }

    function test_longValueIsEditedWhereItIsClicked() {
        const serial = longSerial();
        fixture.applyInfo({ serial: serial });
        const field = input("serialField");
        render();
        mouseClick(field, field.leftPadding + 1, field.height / 2);
        compare(field.cursorPosition, 0);
        keyClick(Qt.Key_Delete);
        verify(app.serial === serial.slice(1));
        compare(field.cursorPosition, 0);
    }

    function test_longValueArrivesWhileTheFieldIsEdited() {
        const serial = longSerial();
        const field = input("serialField");
        field.forceActiveFocus();
        type("1");
        fixture.applyInfo({ serial: serial });
        verify(field.text === serial);
        keyClick(Qt.Key_End);
        keyClick(Qt.Key_Backspace);
        verify(app.serial === serial.slice(0, -1));
    }

    function test_longTextIsPastedWhole() {
        const serial = longSerial();
        app.copyText(serial, "Test");
        const field = input("serialField");
        field.forceActiveFocus();
        keyClick(Qt.Key_V, Qt.ControlModifier);
        verify(app.serial === serial);
    }

    // What the fields show shortened is not thereby changed.
    function test_walkingOverLongValuesChangesNothing() {
        for (const data of test_field_data())
            app[data.tag] = longSerial();
        const before = identifiers();
        input("vinField").forceActiveFocus(Qt.TabFocusReason);
        for (let i = 0; i < 12; ++i)
            keyClick(Qt.Key_Tab);
        app.tab = "convert";
        render();
        verify(identifiers() === before);
    }
}
