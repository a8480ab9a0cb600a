import QtQuick
import QtTest
import KvtEditor

// The hex editor's commands, by keyboard and by mouse.
ViewTest {
    name: "HexCommands"

    ownFileDialogs: true

    readonly property HexEditing editing: app.hexEditing()

    function openEditor(size: int): var {
        fixture.fillHex(size);
        app.showHex = true;
        tryVerify(() => find("hexRows").height > 0);
        render();
        const rows = find("hexRows");
        rows.forceActiveFocus();
        return rows;
    }

    function compareWith(positions: var, longer: int): void {
        editing.compare.start(fixture.writeOther(positions, longer));
        tryCompare(app, "status", "Compared with other.bin.");
        render();
    }

    function digits(offset: int): string {
        return app.hexModel.data(app.hexModel.index(Math.floor(offset / 16), 0), HexModel.HexRole).substr(offset % 16 * 3, 2);
    }

    function ctrl(key: int, more: int): void {
        keyClick(key, Qt.ControlModifier | (more ?? 0));
    }

    // The middle of a byte's digits, or of its character.
    function place(rows: var, offset: int, inText: bool): point {
        const grid = rows.grid;
        const column = offset % 16;
        const x = inText ? grid.charactersX + (column + 0.5) * grid.pitch : grid.digitsX + (3 * column + 1) * grid.pitch;
        return Qt.point(x, (Math.floor(offset / 16) - rows.topRow + 0.5) * rows.rowHeight);
    }

    function doubleClick(rows: var, offset: int, inText: bool): void {
        const at = place(rows, offset, inText);
        mouseDoubleClickSequence(rows, at.x, at.y);
    }

    function drag(rows: var, from: int, to: int, inText: bool): void {
        const start = place(rows, from, inText);
        const end = place(rows, to, inText);
        mousePress(rows, start.x, start.y);
        mouseMove(rows, (start.x + end.x) / 2, (start.y + end.y) / 2);
        mouseMove(rows, end.x, end.y);
        mouseRelease(rows, end.x, end.y);
    }

    function openMenu(button: string, menu: string): var {
        mouseClick(find(button));
        tryCompare(find(menu), "opened", true);
        return find(menu);
    }

    function item(menu: var, text: string): var {
        for (let i = 0; i < menu.count; ++i) {
            if (menu.itemAt(i).text === text)
                return menu.itemAt(i);
        }
        fail("there is no " + text);
    }

    function test_typesDigits() {
        const rows = openEditor(64);
        keyClick("4");
        compare(digits(0), "00");
        compare(find("pendingDigit").visible, true);
        keyClick("A");
        compare(digits(0), "4A");
        compare(find("pendingDigit").visible, false);
        compare(app.hexModel.cursor, 1);
        keyClick("g");
        compare(app.status, "Type hex digits here, or press Tab to type text.");
        compare(rows.activeFocus, true);
    }

    function test_escapeTakesBackTheDigitOnly() {
        openEditor(64);
        keyClick("4");
        keyClick(Qt.Key_Escape);
        compare(app.showHex, true);
        compare(find("pendingDigit").visible, false);
        compare(editing.canUndo, false);
        keyClick("4");
        ctrl(Qt.Key_H);
        ctrl(Qt.Key_H);
        compare(find("pendingDigit").visible, false);
        find("hexRows").forceActiveFocus();
        keyClick("4");
        keyClick(Qt.Key_Backspace);
        compare(find("pendingDigit").visible, false);
        keyClick(Qt.Key_Escape);
        compare(app.showHex, false);
    }

    function test_tabChangesTheColumn() {
        const rows = openEditor(64);
        keyClick(Qt.Key_Tab);
        compare(rows.activeFocus, true);
        compare(editing.typesText, true);
        compare(find("charactersMark", find("cursorMark")).border.color, VOXTheme.orangeBright);
        for (const key of ["a", " ", "B"])
            keyClick(key);
        compare(digits(0) + digits(1) + digits(2), "612042");
        keyClick(Qt.Key_Backtab, Qt.ShiftModifier);
        compare(rows.activeFocus, true);
        compare(editing.typesText, false);
        keyClick(Qt.Key_Backtab, Qt.ShiftModifier);
        compare(rows.activeFocus, false);
        rows.forceActiveFocus();
        keyClick(Qt.Key_Tab);
        keyClick(Qt.Key_Tab);
        compare(rows.activeFocus, false);
        compare(find("hexPatchField").activeFocus, true);
    }

    function test_doubleClickChoosesTheColumn() {
        const rows = openEditor(64);
        doubleClick(rows, 0x15, true);
        compare(app.hexModel.cursor, 0x15);
        compare(editing.typesText, true);
        doubleClick(rows, 0x26, false);
        compare(app.hexModel.cursor, 0x26);
        compare(editing.typesText, false);
    }

    function test_typingShowsTheCursor() {
        const rows = openEditor(10000);
        rows.scrollTo(300);
        keyClick("4");
        compare(rows.topRow, 0);
    }

    function test_selectsByKeys() {
        openEditor(64);
        app.hexModel.cursor = 0x12;
        keyClick(Qt.Key_Right, Qt.ShiftModifier);
        keyClick(Qt.Key_Down, Qt.ShiftModifier);
        compare(find("hexSelectionText").text, "Selected 0x12–0x23, 18 bytes");
        keyClick(Qt.Key_End, Qt.ShiftModifier);
        compare(app.hexModel.selectionLength, 0x2F - 0x12 + 1);
        ctrl(Qt.Key_Home, Qt.ShiftModifier);
        compare(app.hexModel.selectionStart, 0);
        compare(app.hexModel.selectionLength, 0x13);
        keyClick(Qt.Key_Left);
        compare(app.hexModel.selectionLength, 0);
        compare(find("hexSelectionText").visible, false);
        ctrl(Qt.Key_A);
        compare(app.hexModel.selectionLength, 64);
    }

    function test_selectsByDragging_data() {
        return [{ tag: "digits", inText: false }, { tag: "characters", inText: true }];
    }

    function test_selectsByDragging(data) {
        const rows = openEditor(640);
        drag(rows, 0x12, 0x25, data.inText);
        compare(app.hexModel.selectionStart, 0x12);
        compare(app.hexModel.selectionLength, 0x14);
        drag(rows, 0x25, 0x12, data.inText);
        compare(app.hexModel.selectionStart, 0x12);
        compare(app.hexModel.selectionLength, 0x14);
        compare(app.hexModel.cursor, 0x12);
        const at = place(rows, 0x35, data.inText);
        mouseClick(rows, at.x, at.y);
        compare(app.hexModel.cursor, 0x30);
        compare(app.hexModel.selectionLength, 0);
        mouseClick(rows, at.x, at.y, Qt.LeftButton, Qt.ShiftModifier);
        compare(app.hexModel.selectionStart, 0x30);
        compare(app.hexModel.selectionLength, 6);
    }

    function test_draggingBeyondTheEdgeScrolls() {
        const rows = openEditor(100000);
        const start = place(rows, 0x12, false);
        mousePress(rows, start.x, start.y);
        mouseMove(rows, start.x, rows.height + 50);
        tryVerify(() => rows.topRow > 20);
        mouseRelease(rows, start.x, rows.height + 50);
        compare(app.hexModel.selectionStart, 0x12);
        verify(app.hexModel.selectionLength > 20 * 16);
    }

    // A hand that is not quite still.
    function test_clickThatMovesIsAClick() {
        const rows = openEditor(640);
        const edge = rows.grid.digitsX + (3 * 5 - 0.5) * rows.grid.pitch;
        mousePress(rows, edge - 1, 30);
        mouseMove(rows, edge + 2, 30);
        mouseRelease(rows, edge + 2, 30);
        compare(app.hexModel.cursor, 0x10);
        compare(app.hexModel.selectionLength, 0);
    }

    function test_shiftAndDragKeepTheAnchor() {
        const rows = openEditor(640);
        app.hexModel.cursor = 0x05;
        const start = place(rows, 0x12, false);
        const end = place(rows, 0x25, false);
        mousePress(rows, start.x, start.y, Qt.LeftButton, Qt.ShiftModifier);
        mouseMove(rows, end.x, end.y);
        mouseRelease(rows, end.x, end.y, Qt.LeftButton, Qt.ShiftModifier);
        compare(app.hexModel.selectionStart, 0x05);
        compare(app.hexModel.selectionLength, 0x21);
    }

    function test_copiesAndPastes() {
        openEditor(64);
        app.hexModel.select(0x41 - 0x21, 3);
        for (const [key, more, text] of [[Qt.Key_C, 0, "20 21 22"], [Qt.Key_C, Qt.ShiftModifier, " !\""],
                [Qt.Key_C, Qt.AltModifier, "const unsigned char bytes[3] = {\n    0x20, 0x21, 0x22,\n};\n"],
                [Qt.Key_O, Qt.ShiftModifier, "0x20:0x3"]]) {
            ctrl(key, more);
            compare(fixture.clipboardText(), text);
        }
        app.hexModel.select(0x20, 3);
        ctrl(Qt.Key_C);
        app.hexModel.cursor = 0;
        ctrl(Qt.Key_V);
        compare(app.status, "Pasted 3 bytes.");
        compare(digits(0) + digits(1) + digits(2) + digits(3), "20212203");
        ctrl(Qt.Key_Z);
        compare(digits(0), "00");
        ctrl(Qt.Key_Z, Qt.ShiftModifier);
        compare(digits(0), "20");
    }

    // The field's own keys stay the field's.
    function test_fieldsKeepTheirKeys() {
        openEditor(64);
        const field = find("hexSearchField");
        field.forceActiveFocus();
        field.text = "AB";
        ctrl(Qt.Key_A);
        ctrl(Qt.Key_C);
        compare(fixture.clipboardText(), "AB");
        compare(app.hexModel.selectionLength, 0);
        field.text = "";
        ctrl(Qt.Key_V);
        compare(field.text, "AB");
        compare(digits(0), "00");
    }

    function test_fills() {
        openEditor(64);
        compare(find("hexFillButton").enabled, false);
        app.hexModel.select(1, 3);
        find("hexPatchField").text = "AA BB";
        mouseClick(find("hexFillButton"));
        compare(digits(0) + digits(1) + digits(2) + digits(3) + digits(4), "00AABBAA04");
        app.hexModel.select(4, 1);
        find("hexRows").forceActiveFocus();
        ctrl(Qt.Key_F, Qt.ShiftModifier);
        compare(digits(4), "AA");
    }

    function test_xorsTheSelection() {
        openEditor(64);
        app.hexModel.select(0x10, 2);
        find("hexPatchField").text = "FF";
        ctrl(Qt.Key_X, Qt.ShiftModifier);
        compare(digits(0x10) + digits(0x11) + digits(0x12), "EFEE12");
        compare(app.status, "Changed 2 bytes by XOR.");
    }

    function test_blockGoesOutAndIn() {
        openEditor(64);
        ctrl(Qt.Key_S, Qt.ShiftModifier);
        compare(app.status, "Select the bytes to save first.");
        app.hexModel.select(0x10, 3);
        ctrl(Qt.Key_S, Qt.ShiftModifier);
        tryVerify(() => window.asking());
        const field = find("chooserName", window.overlayItem);
        verify(field.activeFocus);
        compare(field.text, "selection.bin");
        field.selectAll();
        type(fixture.tempPath("block"));
        keyClick(Qt.Key_Return);
        tryCompare(app, "status", "Saved 3 bytes as block.bin.");
        tryVerify(() => !window.asking());
        app.hexModel.cursor = 0x20;
        ctrl(Qt.Key_V, Qt.ShiftModifier);
        tryVerify(() => window.asking());
        type(fixture.tempPath("block.bin"));
        keyClick(Qt.Key_Return);
        tryCompare(app, "status", "Pasted 3 bytes.");
        compare(digits(0x20) + digits(0x22) + digits(0x23), "101223");
    }

    function test_replacesAll() {
        openEditor(600);
        find("hexSearchField").text = "10 11";
        find("hexPatchField").text = "AA BB";
        ctrl(Qt.Key_R);
        compare(app.status, "Replaced 3 matches.");
        compare(digits(0x10) + digits(0x111) + digits(0x210) + digits(0x212), "AABBAA12");
        click("hexCloseButton");
        app.showHex = true;
        compare(find("hexUnapplied").visible, false);
        editing.undo();
        compare(digits(0x10) + digits(0x210), "1010");
    }

    function test_goesToChanges() {
        openEditor(640);
        compare(find("hexChangesText").visible, false);
        app.hexGoTo("20");
        app.hexPatch("00 00");
        app.hexGoTo("100");
        app.hexPatch("FF");
        compare(find("hexChangesText").text, "3 bytes changed in 2 places");
        app.hexGoTo("0");
        keyClick(Qt.Key_F7);
        compare(app.hexModel.cursor, 0x20);
        keyClick(Qt.Key_F7);
        compare(app.hexModel.cursor, 0x100);
        keyClick(Qt.Key_F7, Qt.ShiftModifier);
        compare(app.hexModel.cursor, 0x20);
    }

    function test_counts() {
        openEditor(1000);
        const field = find("hexSearchField");
        compare(find("hexMatchText").visible, false);
        field.forceActiveFocus();
        for (const key of ["1", "2"])
            keyClick(key);
        keyClick(Qt.Key_Return);
        tryCompare(find("hexMatchText"), "text", "1 of 4");
        keyClick(Qt.Key_F3);
        compare(find("hexMatchText").text, "2 of 4");
        keyClick(Qt.Key_F3, Qt.ShiftModifier);
        keyClick(Qt.Key_F3, Qt.ShiftModifier);
        compare(find("hexMatchText").text, "4 of 4");
        // Given up with the query.
        field.forceActiveFocus();
        keyClick("3");
        compare(find("hexMatchText").visible, false);
    }

    function test_recentOffsets() {
        openEditor(1000);
        const button = find("hexTargetsButton");
        compare(button.enabled, false);
        find("hexGoToField").forceActiveFocus();
        keyClick(Qt.Key_Down);
        verify(!window.asking());
        for (const offset of ["10", "20:4"])
            app.hexGoTo(offset);
        app.hexModel.cursor = 0;
        mouseClick(button);
        const menu = find("hexTargetsMenu");
        tryCompare(menu, "opened", true);
        compare([menu.itemAt(0).text, menu.itemAt(1).text], ["20:4", "10"]);
        render();
        mouseClick(menu.itemAt(0));
        compare(app.hexModel.selectionStart, 0x20);
        compare(app.hexModel.selectionLength, 4);
        tryCompare(menu, "visible", false);
        // By keyboard.
        ctrl(Qt.Key_G);
        compare(find("hexGoToField").activeFocus, true);
        keyClick(Qt.Key_Down);
        tryCompare(menu, "opened", true);
        keyClick(Qt.Key_Down);
        keyClick(Qt.Key_Down);
        keyClick(Qt.Key_Return);
        compare(app.hexModel.cursor, 0x10);
    }

    function test_compares() {
        const rows = openEditor(1000);
        compare(find("hexMap").visible, false);
        compareWith([0x10, 0x11, 0x200], 5);
        compare(find("hexDifferencesText").text, "3 bytes differ in 2 places; the other file is 5 bytes longer");
        compare(find("hexFileName").text.endsWith("compared with  other.bin"), true);
        const row = find("hexRow1");
        compare(row.digits.slice(0, 5), "10 11");
        compare(row.otherDigits.slice(0, 5), "EF EE");
        compare(find("hexMap").visible, true);
        compare(find("hexMap").runs.length, 4);
        verify(rows.grid.otherCharactersX + rows.grid.charactersWidth < rows.width);
        keyClick(Qt.Key_F6);
        compare(app.status, "Difference 1 of 2: 2 bytes at 0x10.");
        keyClick(Qt.Key_F6);
        compare(app.hexModel.cursor, 0x200);
        keyClick(Qt.Key_F6, Qt.ShiftModifier);
        compare(app.hexModel.selectionStart, 0x10);
        ctrl(Qt.Key_T);
        compare(app.status, "Took over 2 bytes at 0x10.");
        compare(find("hexRow1").digits.slice(0, 5), "EF EE");
        compare(find("hexMap").runs.length, 2);
        ctrl(Qt.Key_Z);
        compare(find("hexMap").runs.length, 4);
        // Everything else works all the while.
        app.hexGoTo("30");
        keyClick("F");
        keyClick("F");
        compare(find("hexDifferencesText").text, "4 bytes differ in 3 places; the other file is 5 bytes longer");
        ctrl(Qt.Key_K, Qt.ShiftModifier);
        compare(find("hexMap").visible, false);
        compare(find("hexDifferencesText").visible, false);
        compare(rows.grid.digitsWidth, Math.max(280, rows.width - 260));
    }

    function test_clickOnTheOtherSide() {
        const rows = openEditor(1000);
        compareWith([0x10], 0);
        const grid = rows.grid;
        mouseDoubleClickSequence(rows, grid.otherDigitsX + 13 * grid.pitch, 30);
        compare(app.hexModel.cursor, 0x14);
        compare(editing.typesText, false);
        mouseDoubleClickSequence(rows, grid.otherCharactersX + 5.5 * grid.pitch, 30);
        compare(app.hexModel.cursor, 0x15);
        compare(editing.typesText, true);
    }

    function test_chosenInTheMap() {
        const rows = openEditor(100000);
        compareWith([99999], 0);
        const map = find("hexMap");
        mouseClick(map, 3, map.height - 2);
        fuzzyCompare(rows.topRow, rows.lastTop, 10);
    }

    function test_listsDifferences() {
        const rows = openEditor(1000);
        compareWith([0x10, 0x11, 0x200, 0x205], 0);
        compare(find("hexPanel").visible, false);
        ctrl(Qt.Key_L);
        compare(find("hexPanel").visible, true);
        render();
        compare(find("hexDifferencesList").count, 3);
        compare(find("hexDifference0").fullText, "00000010  2 bytes");
        mouseClick(find("hexDifference1"));
        compare(app.hexModel.selectionStart, 0x200);
        const list = find("hexDifferencesList");
        list.forceActiveFocus();
        keyClick(Qt.Key_Down);
        keyClick(Qt.Key_Return);
        compare(app.hexModel.selectionStart, 0x205);
        // An edit leaves the list where it is.
        rows.forceActiveFocus();
        ctrl(Qt.Key_T);
        compare(list.count, 2);
        compare(list.currentIndex, 1);
        ctrl(Qt.Key_L);
        compare(find("hexPanel").visible, false);
    }

    // The rows never lose bytes to a panel, wherever it stands.
    function test_panelLeavesRoom_data() {
        return [{ tag: "smallest", width: 1100, height: 720 }, { tag: "usual", width: 1440, height: 900 },
            { tag: "large", width: 1920, height: 1080 }];
    }

    function test_panelLeavesRoom(data) {
        window.width = data.width;
        window.height = data.height;
        const rows = openEditor(1000);
        const panel = find("hexPanel");
        for (const comparing of [false, true]) {
            if (comparing)
                compareWith([0x10], 0);
            for (const key of [Qt.Key_I, Qt.Key_L])
                ctrl(key);
            render();
            compare(panel.visible, true);
            verify(rows.grid.charactersX + rows.grid.charactersWidth <= rows.width - 8);
            verify(!comparing || rows.grid.otherCharactersX + rows.grid.charactersWidth <= rows.width - 8);
            verify(rows.rowsInSight >= 8);
            const place = panel.mapToItem(rows, 0, 0);
            verify(place.x >= rows.width || place.y >= rows.height);
            for (const key of [Qt.Key_I, Qt.Key_L])
                ctrl(key);
        }
    }

    // However much there is to say above the rows.
    function test_nothingLeavesTheWindow() {
        window.width = 1100;
        window.height = 720;
        const rows = openEditor(10000000);
        compareWith(Array.from({ length: 3000 }, (_, i) => 1000 * i), 5000000);
        app.hexGoTo("900000");
        app.hexPatch("AA BB CC DD EE");
        app.hexGoTo("100000:812345");
        for (const key of [Qt.Key_I, Qt.Key_L])
            ctrl(key);
        render();
        for (const text of ["hexSelectionText", "hexChangesText", "hexDifferencesText"])
            verify(find(text).width > 60);
        for (const name of ["hexCloseButton", "hexTargetsButton", "hexWriteBackButton", "hexScrollBar", "hexPanel"]) {
            const item = find(name);
            verify(item.mapToItem(null, item.width, 0).x <= window.width - 10, name);
        }
    }

    function test_closedPanelGivesTheKeyboardBack() {
        const rows = openEditor(1000);
        ctrl(Qt.Key_I);
        find("hexInspector").forceActiveFocus();
        ctrl(Qt.Key_I);
        compare(rows.activeFocus, true);
        compareWith([1, 3], 0);
        ctrl(Qt.Key_L);
        find("hexDifferencesList").forceActiveFocus();
        ctrl(Qt.Key_K, Qt.ShiftModifier);
        compare(rows.activeFocus, true);
    }

    // Even where the cursor stays.
    function test_showsWhereItActs() {
        const rows = openEditor(100000);
        compareWith([0x20], 0);
        for (const act of [() => keyClick(Qt.Key_F6), () => ctrl(Qt.Key_T), () => ctrl(Qt.Key_Z),
                           () => ctrl(Qt.Key_Z, Qt.ShiftModifier), () => keyClick(Qt.Key_F7)]) {
            rows.scrollTo(3000);
            act();
            compare(rows.topRow, 0, app.status);
        }
    }

    function test_commandsWithoutComparison() {
        openEditor(100);
        for (const [key, more] of [[Qt.Key_L, 0], [Qt.Key_K, Qt.ShiftModifier], [Qt.Key_T, 0]]) {
            app.setStatus("");
            ctrl(key, more);
            compare(app.status, "Compare with a file first.");
        }
        compareWith([1], 0);
        compare(find("hexPanel").visible, false);
    }

    function test_choosesTheOtherFile() {
        const rows = openEditor(100);
        find("hexSearchField").forceActiveFocus();
        ctrl(Qt.Key_K);
        tryVerify(() => window.asking());
        keyClick(Qt.Key_Escape);
        tryVerify(() => !window.asking());
        compare(app.showHex, true);
        verify(rows.visible);
    }

    function test_bookmarks() {
        const rows = openEditor(10000);
        for (const offset of [0x2000, 0x12]) {
            app.hexModel.cursor = offset;
            ctrl(Qt.Key_B);
        }
        keyClick(Qt.Key_F2);
        compare(app.hexModel.cursor, 0x2000);
        verify(rows.topRow > 0x200 - rows.rowsInSight);
        keyClick(Qt.Key_F2, Qt.ShiftModifier);
        compare(app.hexModel.cursor, 0x12);
        compare(app.status, "Bookmark 1 of 2 at 0x12.");
        app.hexGoTo("30");
        mouseClick(find("hexTargetsButton"));
        const menu = find("hexTargetsMenu");
        tryCompare(menu, "opened", true);
        const entries = [0, 1, 2].map(i => menu.itemAt(i).text + "|" + menu.itemAt(i).keyText);
        compare(entries, ["0x12|Bookmark", "0x2000|Bookmark", "30|"]);
        render();
        mouseClick(menu.itemAt(1));
        compare(app.hexModel.cursor, 0x2000);
        tryCompare(menu, "visible", false);
        ctrl(Qt.Key_B);
        compare(editing.bookmarks, ["0x12"]);
    }

    function test_everyCommandIsInAMenu() {
        openEditor(64);
        const expected = {
            hexEditMenu: ["Undo|Ctrl+Z", "Redo|Ctrl+Shift+Z", "Copy as hex|Ctrl+C", "Copy as text|Ctrl+Shift+C",
                "Copy as C array|Ctrl+Alt+C", "Copy offset|Ctrl+Shift+O", "Paste|Ctrl+V", "Paste a file|Ctrl+Shift+V",
                "Apply the patch|Return", "Fill the selection|Ctrl+Shift+F", "XOR the selection|Ctrl+Shift+X", "Replace all|Ctrl+R",
                "Select all|Ctrl+A", "Save file|Ctrl+S", "Save the selection|Ctrl+Shift+S", "Close|Esc"],
            hexGoMenu: ["Go to offset|Ctrl+G", "Set or remove a bookmark|Ctrl+B", "Next bookmark|F2", "Previous bookmark|Shift+F2",
                "Find|Ctrl+F", "Find next|F3", "Find previous|Shift+F3", "Next change|F7",
                "Previous change|Shift+F7", "Next difference|F6", "Previous difference|Shift+F6",
                "Inspector|Ctrl+I"],
            hexCompareMenu: ["Compare with a file|Ctrl+K", "Stop comparing|Ctrl+Shift+K", "Take over|Ctrl+T",
                "List of differences|Ctrl+L"]
        };
        for (const name in expected) {
            const menu = openMenu(name + "Button", name);
            const items = [];
            for (let i = 0; i < menu.count; ++i) {
                if (menu.itemAt(i).text)
                    items.push(menu.itemAt(i).text + "|" + menu.itemAt(i).keyText);
            }
            compare(items, expected[name]);
            keyClick(Qt.Key_Escape);
            tryCompare(menu, "visible", false);
        }
        compare(app.showHex, true);
    }

    function test_menusAct() {
        openEditor(64);
        let menu = openMenu("hexEditMenuButton", "hexEditMenu");
        compare(item(menu, "Undo").enabled, false);
        compare(item(menu, "Fill the selection").enabled, false);
        mouseClick(item(menu, "Select all"));
        compare(app.hexModel.selectionLength, 64);
        tryCompare(menu, "visible", false);
        menu = openMenu("hexCompareMenuButton", "hexCompareMenu");
        compare(item(menu, "Take over").enabled, false);
        mouseClick(item(menu, "Compare with a file"));
        tryVerify(() => button("Open") !== undefined);
        keyClick(Qt.Key_Escape);
        tryVerify(() => !window.asking());
        find("hexEditMenuButton").forceActiveFocus();
        keyClick(Qt.Key_Down);
        menu = find("hexEditMenu");
        tryCompare(menu, "opened", true);
        mouseClick(item(menu, "Save file"));
        tryVerify(() => button("Save") !== undefined);
        keyClick(Qt.Key_Escape);
        tryVerify(() => !window.asking());
    }

    function test_rowMenuCopiesTheSelection() {
        const rows = openEditor(64);
        app.hexModel.select(0x10, 2);
        mouseClick(rows, 300, 50, Qt.RightButton);
        tryCompare(find("hexMenu"), "opened", true);
        mouseClick(find("copyHex"));
        compare(fixture.clipboardText(), "10 11");
        compare(app.hexModel.selectionLength, 2);
    }

    function test_unappliedTextIsPointedAt_data() {
        return [{ tag: "close", button: "hexCloseButton" }, { tag: "write back", button: "hexWriteBackButton" }];
    }

    function test_unappliedTextIsPointedAt(data) {
        fixture.openFile("open.kvt", 64);
        openEditor(64);
        const field = find("hexPatchField");
        const hint = find("hexUnapplied");
        field.text = "AA";
        compare(hint.visible, false);
        mousePress(find(data.button));
        compare(hint.visible, true);
        mouseRelease(find(data.button));
        compare(app.showHex, false);
        compare(digits(0), "00");
        app.showHex = true;
        compare(hint.visible, true);
        mouseClick(find("hexApplyButton"));
        compare(hint.visible, false);
        compare(digits(0), "AA");
        mouseClick(find(data.button));
        app.showHex = true;
        compare(hint.visible, false);
    }

    function test_appliedTextStaysAppliedWhenSaved() {
        fixture.openFile("open.kvt", 64);
        openEditor(64);
        find("hexPatchField").text = "AA";
        mouseClick(find("hexApplyButton"));
        app.saveKvt(fixture.tempPath("saved.kvt"));
        compare(app.statusOK, 1);
        mouseClick(find("hexCloseButton"));
        app.showHex = true;
        compare(find("hexUnapplied").visible, false);
        fixture.openFile("open.kvt", 64);
        keyClick(Qt.Key_Escape);
        compare(app.showHex, false);
        app.showHex = true;
        compare(find("hexUnapplied").visible, true);
    }

    function test_commandsWithoutFile() {
        app.showHex = true;
        tryVerify(() => find("hexRows").height > 0);
        find("hexRows").forceActiveFocus();
        for (const key of [Qt.Key_A, Qt.Key_B, Qt.Key_C, Qt.Key_V, Qt.Key_K]) {
            app.setStatus("");
            ctrl(key);
            compare(app.status, "No file is open.");
        }
        for (const key of [Qt.Key_F7, Qt.Key_F6, Qt.Key_F2, Qt.Key_0]) {
            app.setStatus("");
            keyClick(key);
            compare(app.status, "No file is open.");
        }
        verify(!window.asking());
    }

    function test_silentWhileHidden() {
        openEditor(64);
        app.showHex = false;
        app.setStatus("Ready.");
        for (const key of [Qt.Key_A, Qt.Key_B, Qt.Key_Z, Qt.Key_I, Qt.Key_K, Qt.Key_L, Qt.Key_T])
            ctrl(key);
        for (const key of [Qt.Key_F2, Qt.Key_F6, Qt.Key_F7])
            keyClick(key);
        compare(app.status, "Ready.");
        compare(app.hexModel.selectionLength, 0);
        verify(!window.asking());
    }

    function test_readOut() {
        const rows = openEditor(64);
        compare(rows.Accessible.description, "Types hex digits");
        app.hexModel.select(0, 2);
        editing.typesText = true;
        compare(rows.Accessible.description, "Types text. Selected 0x0–0x1, 2 bytes");
        compareWith([0], 0);
        const name = row => find("hexRow" + row).Accessible.name;
        verify(name(0).includes("other file FF 01"), name(0));
        verify(name(0).endsWith(", 1 different"), name(0));
        verify(!name(1).includes("different"), name(1));
        app.hexModel.cursor = 0x10;
        app.hexPatch("AA BB");
        verify(name(1).endsWith(", 2 changed, 2 different"), name(1));
        editing.toggleBookmark();
        verify(name(1).endsWith(", 2 changed, 2 different, 1 bookmarked"), name(1));
        editing.toggleBookmark();
        editing.compare.stop();
        verify(name(1).endsWith(", 2 changed") && !name(1).includes("other file"), name(1));
        compare(find("hexTargetsButton").Accessible.name, "Bookmarks and recent offsets");
    }
}
