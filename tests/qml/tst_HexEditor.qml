import QtQuick
import QtTest
import KvtEditor

ViewTest {
    name: "HexEditor"

    function openEditor(size: int): var {
        fixture.fillHex(size);
        app.showHex = true;
        tryVerify(() => find("hexRows").height > 0);
        render();
        return find("hexRows");
    }

    // The delegates in sight, from the top.
    function shownRows(): var {
        const rows = find("hexCanvas");
        const shown = [];
        for (let i = 0; i < rows.children.length; ++i) {
            const row = rows.children[i];
            const inSight = row.visible && row.y < rows.height && row.y + row.height > 0;
            if (inSight && row.objectName.startsWith("hexRow"))
                shown.push(row);
        }
        return shown.sort((a, b) => a.y - b.y);
    }

    function mark(name: string): var {
        return find(name, find("hexRows"));
    }

    function matchMarks(): var {
        const marks = [];
        for (let i = 0, next = null; (next = findChild(find("hexRows"), "matchMark" + i)) !== null; ++i)
            marks.push(next);
        return marks;
    }

    // The text of a shown row between two characters, as wide as it is drawn.
    function widthOf(text: string): real {
        const probe = createTemporaryObject(probeComponent, window.contentItem, { text: text });
        return probe.contentWidth;
    }

    // A mark stands around the bytes from `first` to before `end` of the row, in both columns.
    function verifyMarks(mark: var, rowY: int, first: int, end: int): void {
        const rows = find("hexRows");
        const texts = shownRows()[0].children[0].children;
        const digits = inRows(find("digitsMark", mark));
        const characters = inRows(find("charactersMark", mark));
        const digitsX = inRows(texts[1]).x + widthOf("0".repeat(3 * first)) - 2;
        const charactersX = inRows(texts[2]).x + widthOf("0".repeat(first)) - 1;
        fuzzyCompare(digits.x, digitsX, 0.6);
        fuzzyCompare(digits.width, widthOf("0".repeat(3 * (end - first) - 1)) + 4, 0.6);
        fuzzyCompare(characters.x, charactersX, 0.6);
        fuzzyCompare(characters.width, widthOf("0".repeat(end - first)) + 2, 0.6);
        for (const place of [digits, characters]) {
            compare(place.y, rowY + 1);
            compare(place.height, 18);
            verify(place.x + place.width < rows.width);
        }
    }

    function inRows(item: var): rect {
        return item.mapToItem(find("hexRows"), 0, 0, item.width, item.height);
    }

    function rightClick(rows: var, row: int): var {
        mouseClick(rows, 300, row * rows.rowHeight + 10, Qt.RightButton);
        const menu = find("hexMenu");
        tryCompare(menu, "opened", true);
        return menu;
    }

    function clipboard(): string {
        const field = find("hexPatchField");
        field.clear();
        field.paste();
        return field.text;
    }

    Component {
        id: probeComponent

        Text {
            font { family: VOXTheme.fixedFamily; pixelSize: 12 }
            textFormat: Text.PlainText
        }
    }

    function test_overlayCoversTheWindow() {
        openEditor(100);
        const overlay = find("hexOverlay");
        compare(inWindow(overlay), Qt.rect(0, 0, window.width, window.height));
        const layers = Array.from(window.contentItem.children);
        const layerOf = name => layers.findIndex(item => findChild(item, name) !== null);
        for (const name of ["sidebar", "header", "footer", "viewStack"])
            verify(layerOf(name) >= 0 && layerOf(name) < layerOf("hexOverlay"), name);
    }

    function test_namesTheFile() {
        openEditor(100);
        compare(find("hexFileName").text, "");
        fixture.openFile("a <b>tune.kvt", 64);
        app.showHex = true;
        const name = find("hexFileName");
        compare(name.text, "a <b>tune.kvt");
        compare(name.textFormat, Text.PlainText);
        fixture.openFile("w".repeat(200) + ".kvt", 64);
        render();
        verify(name.truncated);
        compare(name.lineCount, 1);
        verify(name.x + name.width < find("hexCloseButton").x);
    }

    function test_nothingBehindTheOverlayTakesPart() {
        openEditor(100);
        const nav = find("nav_stock");
        compare(nav.enabled, false);
        mouseMove(nav);
        compare(nav.hovered, false);
        mouseClick(nav);
        compare(app.tab, "main");
        for (let i = 0; i < 12; ++i) {
            keyClick(Qt.Key_Tab);
            let item = window.activeFocusItem;
            while (item && item !== find("hexOverlay"))
                item = item.parent;
            verify(item, "the keyboard left the overlay");
        }
    }

    function test_wheelStaysInTheOverlay() {
        window.height = 720;
        openEditor(100);
        const view = find("scrollView", find("identifierFields"));
        const place = inWindow(view);
        mouseWheel(find("hexOverlay"), place.x + 10, place.y + 10, 0, -480);
        compare(view.contentY, 0);
    }

    function test_keyboardComesAndGoes() {
        fixture.openFile("a.kvt", 64);
        const before = input("devEmailField");
        before.forceActiveFocus();
        app.showHex = true;
        tryCompare(window, "activeFocusItem", find("hexSearchField"));
        keyClick(Qt.Key_Escape);
        compare(app.showHex, false);
        tryCompare(window, "activeFocusItem", before);
    }

    function test_escapeClosesFromEveryControl_data() {
        return ["hexSearchField", "hexFindButton", "hexRows", "hexPatchField"].map(name => ({ tag: name }));
    }

    function test_escapeClosesFromEveryControl(data) {
        openEditor(100);
        find(data.tag).forceActiveFocus();
        keyClick(Qt.Key_Escape);
        compare(app.showHex, false);
    }

    function test_closeButton() {
        openEditor(100);
        click("hexCloseButton");
        compare(app.showHex, false);
        compare(find("hexOverlay").visible, false);
    }

    function test_seventeenBytes() {
        openEditor(17);
        const rows = shownRows();
        compare(rows.length, 2);
        compare(rows[0].offset, "00000000");
        compare(rows[0].digits, "00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F");
        compare(rows[0].characters, "................");
        compare(rows[1].offset, "00000010");
        compare(rows[1].digits, "10");
        compare(rows[1].characters, ".");
        compare(rows[1].y, 20);
        compare(rows[1].height, 20);
        compare(find("hexScrollBar").visible, false);
    }

    function test_emptyBufferShowsOneEmptyRow() {
        app.showHex = true;
        render();
        const rows = shownRows();
        compare(rows.length, 1);
        compare(rows[0].offset, "00000000");
        compare(rows[0].digits, "");
        compare(rows[0].current, true);
        compare(find("hexInfo").text, "0 bytes  •  offset 0x0");
    }

    function test_infoLine() {
        openEditor(0x3000);
        app.hexModel.cursor = 0x1a2b;
        compare(find("hexInfo").text, "12288 bytes  •  offset 0x1A2B");
        compare(find("hexInfo").font.family, VOXTheme.fixedFamily);
        compare(find("hexInfo").color, VOXTheme.muted);
    }

    function test_largeFileIsRightToItsLastRow() {
        const rows = openEditor(300 * 1024 * 1024);
        compare(rows.rowCount, 19660800);
        rows.forceActiveFocus();
        keyClick(Qt.Key_End, Qt.ControlModifier);
        compare(app.hexModel.currentRow, 19660799);
        let shown = shownRows();
        compare(shown[shown.length - 1].offset, "12BFFFF0");
        compare(shown[shown.length - 1].y + 20, Math.round(rows.height));
        for (let i = 1; i < shown.length; ++i)
            compare(shown[i].y - shown[i - 1].y, 20);
        mouseWheel(rows, 100, 100, 0, 120);
        shown = shownRows();
        compare(parseInt(shown[1].offset, 16) - parseInt(shown[0].offset, 16), 16);
        keyClick(Qt.Key_Home, Qt.ControlModifier);
        compare(shownRows()[0].offset, "00000000");
    }

    function test_scrollBarOfALargeFile() {
        const rows = openEditor(300 * 1024 * 1024);
        const bar = find("hexScrollBar");
        verify(bar.visible);
        verify(bar.contentItem.height >= 20, bar.contentItem.height);
        mouseClick(bar, bar.width / 2, bar.height - 2);
        compare(Math.round(rows.topRow + rows.rowsInSight), rows.rowCount);
        mouseClick(bar, bar.width / 2, 2);
        compare(rows.topRow, 0);
    }

    function test_keysMoveTheRow_data() {
        return [
            { tag: "down", key: Qt.Key_Down, from: 10, to: 11 },
            { tag: "up", key: Qt.Key_Up, from: 10, to: 9 },
            { tag: "up-at-the-top", key: Qt.Key_Up, from: 0, to: 0 },
            { tag: "down-at-the-end", key: Qt.Key_Down, from: 624, to: 624 },
            { tag: "control-home", key: Qt.Key_Home, modifiers: Qt.ControlModifier, from: 300, to: 0 },
            { tag: "page-up-at-the-top", key: Qt.Key_PageUp, from: 3, to: 0 },
            { tag: "page-down-at-the-end", key: Qt.Key_PageDown, from: 620, to: 624 }
        ];
    }

    function test_keysMoveTheRow(data) {
        const rows = openEditor(10000);
        app.hexModel.clickRow(data.from);
        rows.forceActiveFocus();
        keyClick(data.key, data.modifiers ?? Qt.NoModifier);
        compare(app.hexModel.currentRow, data.to);
        compare(app.hexModel.cursor, data.to * 16);
        verify(shownRows().some(row => row.current && row.y >= 0 && row.y + 20 <= rows.height));
    }

    function test_keysMoveTheByte() {
        const rows = openEditor(10000);
        rows.forceActiveFocus();
        for (const [key, modifiers, cursor] of [[Qt.Key_Right, Qt.NoModifier, 1], [Qt.Key_Down, Qt.NoModifier, 17],
                [Qt.Key_End, Qt.NoModifier, 31], [Qt.Key_Right, Qt.NoModifier, 32], [Qt.Key_Left, Qt.NoModifier, 31],
                [Qt.Key_Home, Qt.NoModifier, 16], [Qt.Key_Left, Qt.NoModifier, 15],
                [Qt.Key_End, Qt.ControlModifier, 9999], [Qt.Key_Up, Qt.NoModifier, 9983],
                [Qt.Key_Home, Qt.ControlModifier | Qt.KeypadModifier, 0],
                [Qt.Key_Right, Qt.AltModifier, 0], [Qt.Key_Down, Qt.ControlModifier, 0]]) {
            keyClick(key, modifiers);
            compare(app.hexModel.cursor, cursor);
            verify(shownRows().some(row => row.current && row.y >= 0 && row.y + 20 <= rows.height));
        }
    }

    function test_doubleClickPutsTheCursorOnTheByte_data() {
        return [
            { tag: "first-digit", x: grid => grid.digitsX + 3 * 5 * grid.pitch + 1, byte: 5 },
            { tag: "second-digit", x: grid => grid.digitsX + (3 * 5 + 1.9) * grid.pitch, byte: 5 },
            { tag: "last-byte", x: grid => grid.digitsX + 3 * 15 * grid.pitch + 1, byte: 15 },
            { tag: "character", x: grid => grid.charactersX + 7.5 * grid.pitch, byte: 7 },
            { tag: "offset", x: () => 20, byte: 0 },
            { tag: "between", x: grid => grid.charactersX - 20, byte: 0 },
            { tag: "behind", x: grid => grid.charactersX + 17 * grid.pitch, byte: 0 }
        ];
    }

    function test_doubleClickPutsTheCursorOnTheByte(data) {
        const rows = openEditor(10000);
        mouseDoubleClickSequence(rows, data.x(rows.grid), 3 * 20 + 10);
        compare(app.hexModel.cursor, 3 * 16 + data.byte);
    }

    function test_rulerMarksTheColumn() {
        openEditor(100);
        app.hexModel.cursor = 0x1b;
        const ruler = find("hexRuler");
        for (let i = 0; i < 16; ++i) {
            const numbers = find("rulerColumn" + i, ruler).children;
            compare(numbers[0].text, "0" + i.toString(16).toUpperCase());
            compare(numbers[1].text, i.toString(16).toUpperCase());
            for (const number of [numbers[0], numbers[1]])
                compare(number.color, i === 11 ? VOXTheme.orange : VOXTheme.muted);
        }
    }

    function test_goTo() {
        const rows = openEditor(100000);
        keyClick(Qt.Key_G, Qt.ControlModifier);
        const field = find("hexGoToField");
        verify(field.activeFocus);
        field.text = "8000";
        keyClick(Qt.Key_Return);
        compare(app.hexModel.cursor, 0x8000);
        compare(app.status, "At 0x8000.");
        verify(rows.activeFocus);
        verifyInTheMiddle(rows);
        keyClick(Qt.Key_G, Qt.ControlModifier);
        compare(field.selectedText, "8000");
        field.text = "fffff";
        keyClick(Qt.Key_Return);
        compare(app.hexModel.cursor, 0x8000);
        compare(app.statusOK, 0);
        verify(field.activeFocus);
    }

    function verifyInTheMiddle(rows: var): void {
        const row = shownRows().find(shown => shown.current);
        verify(row.y >= rows.height / 3 - 20 && row.y <= 2 * rows.height / 3, row.y + " of " + rows.height);
    }

    function test_findPrevious() {
        const rows = openEditor(100000);
        app.hexModel.cursor = 0x8000;
        find("hexPatchField").text = "de ad";
        click("hexApplyButton");
        app.hexModel.cursor = 0;
        find("hexSearchField").text = "dead";
        keyClick(Qt.Key_F3, Qt.ShiftModifier);
        compare(app.status, "FOUND AT 0X8000");
        verifyInTheMiddle(rows);
        app.hexModel.cursor = 0x9000;
        click("hexPreviousButton");
        compare(app.hexModel.cursor, 0x8000);
        verify(find("hexSearchField").activeFocus);
    }

    function test_pageIsWhatIsInSight() {
        const rows = openEditor(100000);
        rows.forceActiveFocus();
        keyClick(Qt.Key_PageDown);
        compare(app.hexModel.currentRow, Math.floor(rows.height / 20) - 1);
        keyClick(Qt.Key_PageUp);
        compare(app.hexModel.currentRow, 0);
    }

    function test_clickMovesTheCursorAndTakesTheKeyboard() {
        const rows = openEditor(10000);
        mouseClick(rows, 200, 5 * 20 + 10);
        compare(app.hexModel.cursor, 80);
        compare(window.activeFocusItem, rows);
        compare(shownRows()[5].color, VOXTheme.accent(0.15));
        compare(shownRows()[4].color, Qt.rgba(0, 0, 0, 0));
    }

    function test_clickBelowTheLastRowIsHarmless() {
        const rows = openEditor(17);
        compare(app.hexModel.currentRow, 0);
        mouseClick(rows, 200, rows.height - 5);
        compare(app.hexModel.currentRow, 0);
        mouseClick(rows, 200, 2 * rows.rowHeight + 1);
        compare(app.hexModel.currentRow, 0);
        mouseClick(rows, 200, 2 * rows.rowHeight - 1);
        compare(app.hexModel.currentRow, 1);
    }

    function test_wheelScrollsByPixels() {
        const rows = openEditor(100000);
        mouseWheel(rows, 100, 100, 0, -10);
        compare(rows.topRow, 0.25);
        compare(shownRows()[0].y, -5);
        mouseWheel(rows, 100, 100, 0, 1200);
        compare(rows.topRow, 0);
        compare(app.hexModel.cursor, 0);
    }

    function test_searchBringsTheMatchIntoSight() {
        fixture.openFile("a.kvt", 100000, "needle");
        app.showHex = true;
        const rows = find("hexRows");
        render();
        tryCompare(window, "activeFocusItem", find("hexSearchField"));
        type("needle");
        keyClick(Qt.Key_Return);
        compare(app.hexModel.cursor, 99994);
        verify(shownRows().some(row => row.current));
        compare(find("hexStatus").text, app.status);
        compare(find("hexStatus").color, VOXTheme.success);
    }

    function test_matchInSightScrollsNothing() {
        const rows = openEditor(100000);
        mouseWheel(rows, 100, 100, 0, -40);
        const top = rows.topRow;
        app.hexModel.cursor = 16 * 5;
        compare(rows.topRow, top);
    }

    function test_findAndNextStepOn_data() {
        return [{ tag: "hexFindButton" }, { tag: "hexNextButton" }];
    }

    function test_findAndNextStepOn(data) {
        openEditor(1000);
        find("hexSearchField").text = "07 08";
        click(data.tag);
        compare(app.hexModel.cursor, 7);
        click(data.tag);
        compare(app.hexModel.cursor, 263);
    }

    function test_matchAtTheCursorComesBackIntoSight() {
        const rows = openEditor(64 * 1024);
        app.hexPatch("FF 00 EE 00");
        app.hexModel.cursor = 1000;
        find("hexSearchField").text = "FF 00 EE 00";
        click("hexFindButton");
        compare(app.hexModel.cursor, 0);
        rows.scrollTo(2000);
        compare(rows.topRow, 2000);
        click("hexNextButton");
        compare(app.status, "FOUND AT 0X0");
        compare(rows.topRow, 0);
    }

    function test_searchInVainKeepsThePlace() {
        const rows = openEditor(64 * 1024);
        rows.scrollTo(2000);
        find("hexSearchField").text = "FF FF FF FF";
        click("hexFindButton");
        compare(app.status, "Not found.");
        compare(rows.topRow, 2000);
    }

    function test_patchShowsAtOnce() {
        openEditor(64);
        app.hexModel.cursor = 16;
        find("hexPatchField").text = "41 42";
        click("hexApplyButton");
        compare(app.status, "Patched 2 byte(s).");
        compare(shownRows()[1].digits.slice(0, 8), "41 42 12");
        compare(shownRows()[1].characters.slice(0, 3), "AB.");
    }

    function test_longPatchIsPastedWhole_data() {
        return [{ tag: "apart", text: "FE ".repeat(20000) }, { tag: "together", text: "FE".repeat(20000) }];
    }

    function test_longPatchIsPastedWhole(data) {
        openEditor(100000);
        app.copyText(data.text, "");
        find("hexPatchField").forceActiveFocus();
        keyClick(Qt.Key_V, Qt.ControlModifier);
        click("hexApplyButton");
        compare(app.status, "Patched 20000 byte(s).");
        compare(shownRows()[0].digits, "FE ".repeat(16).trim());
        app.hexModel.cursor = 0;
        app.hexFind("FE FE 20");
        compare(app.hexModel.cursor, 19998);
        app.hexModel.cursor = 99999;
        app.copyText(data.text, "");
        find("hexSearchField").forceActiveFocus();
        keyClick(Qt.Key_V, Qt.ControlModifier);
        click("hexFindButton");
        compare(app.status, "FOUND AT 0X0");
    }

    function test_anotherFileShowsAtOnce() {
        const rows = openEditor(100000);
        rows.forceActiveFocus();
        keyClick(Qt.Key_End, Qt.ControlModifier);
        fixture.fillHex(40);
        compare(rows.topRow, 0);
        compare(shownRows().length, 3);
        compare(app.hexModel.cursor, 39);
        compare(shownRows()[2].current, true);
    }

    function test_writeBackCloses() {
        fixture.openFile("a.kvt", 64);
        app.showHex = true;
        render();
        click("hexWriteBackButton");
        compare(app.showHex, false);
        compare(app.status, "Hex written back into the open file buffer.");
    }

    function test_columns() {
        const rows = openEditor(64);
        const texts = findChild(rows, "hexRow0").children[0].children;
        compare(texts[0].width, 80);
        compare(texts[1].width, Math.max(280, rows.width - 260));
        compare(texts[2].width, 140);
        compare(texts[1].x - texts[0].x, 92);
        compare(texts[0].mapToItem(rows, 0, 0).x, 8);
        for (const column of [0, 1, 2]) {
            compare(texts[column].font.family, VOXTheme.fixedFamily);
            compare(texts[column].font.pixelSize, 12);
        }
        compare(texts[0].color, VOXTheme.orange);
        compare(texts[1].color, VOXTheme.text);
        compare(texts[2].color, VOXTheme.muted);
    }

    // Whether anything is drawn in that part of a row, in a picture of the window.
    function isInked(image: var, row: int, from: real, to: real): bool {
        const corner = find("hexRows").mapToItem(window.contentItem, 0, 0);
        for (let x = Math.ceil(corner.x + from); x < corner.x + to; ++x) {
            for (let y = corner.y + row * 20 + 2; y < corner.y + row * 20 + 18; ++y) {
                if (!Qt.colorEqual(image.pixel(x, y), VOXTheme.input))
                    return true;
            }
        }
        return false;
    }

    // The lightness of each pixel in that part of a row.
    function inkOf(image: var, row: int, from: real, to: real): string {
        const corner = find("hexRows").mapToItem(window.contentItem, 0, 0);
        const ink = [];
        for (let x = Math.ceil(corner.x + from); x < corner.x + to; ++x) {
            for (let y = corner.y + row * 20 + 2; y < corner.y + row * 20 + 18; ++y)
                ink.push(Math.round(image.pixel(x, y).hslLightness * 20));
        }
        return ink.join();
    }

    // The colour between the digits of a byte and of the next one, or at the bottom of its digits.
    function groundOf(offset: int, atBottom: bool, other: bool): color {
        const rows = find("hexRows");
        const grid = rows.grid;
        const image = grabImage(window.contentItem);
        const x = (other ? grid.otherDigitsX : grid.digitsX) + (3 * (offset % 16) + (atBottom ? 1 : 2.2)) * grid.pitch;
        const y = Math.round((Math.floor(offset / 16) - rows.topRow) * 20) + (atBottom ? 19 : 10);
        const place = rows.mapToItem(window.contentItem, x, y);
        return image.pixel(Math.floor(place.x), Math.floor(place.y));
    }

    // The corner of a byte's cell, where its bookmark is.
    function flagOf(offset: int, inText: bool): color {
        const rows = find("hexRows");
        const grid = rows.grid;
        const image = grabImage(window.contentItem);
        const x = inText ? grid.charactersX + offset % 16 * grid.pitch : grid.digitsX + (3 * (offset % 16) - 0.5) * grid.pitch;
        const place = rows.mapToItem(window.contentItem, Math.round(x), (Math.floor(offset / 16) - rows.topRow) * 20);
        return image.pixel(Math.floor(place.x) + 1, Math.floor(place.y) + 1);
    }

    function test_marksAreDrawn() {
        const rows = openEditor(1000);
        const editing = app.hexEditing();
        compare(groundOf(0x21), VOXTheme.input);
        app.hexModel.select(0x18, 10);
        compare(groundOf(0x21), VOXTheme.selectedFill);
        compare(groundOf(0x22), VOXTheme.input);
        app.hexModel.cursor = 0x18;
        compare(groundOf(0x21), VOXTheme.input);

        compare(groundOf(0x121), VOXTheme.input);
        app.hexFind("20 21");
        compare(groundOf(0x120), VOXTheme.matchFill);
        compare(groundOf(0x122), VOXTheme.input);
        editing.matches.forget();
        compare(groundOf(0x120), VOXTheme.input);

        app.hexModel.cursor = 0x46;
        compare(groundOf(0x46, true), groundOf(0x45, true));
        editing.type("F");
        editing.type("F");
        app.hexModel.cursor = 0;
        compare(groundOf(0x46, true), VOXTheme.orangeBright);
        compare(groundOf(0x45, true), VOXTheme.input);
        rows.scrollTo(2.25);
        compare(groundOf(0x46, true), VOXTheme.orangeBright);
        compare(groundOf(0x45, true), VOXTheme.input);
        editing.undo();
        app.hexModel.cursor = 0;
        compare(groundOf(0x46, true), VOXTheme.input);

        app.hexModel.cursor = 0x74;
        editing.toggleBookmark();
        app.hexModel.cursor = 0;
        compare(flagOf(0x74), VOXTheme.success);
        compare(flagOf(0x74, true), VOXTheme.success);
        compare(flagOf(0x75), VOXTheme.input);

        editing.compare.start(fixture.writeOther([0x51, 0x90], 0));
        tryCompare(app, "status", "Compared with other.bin.");
        for (const other of [false, true]) {
            compare(groundOf(0x51, false, other), VOXTheme.differentFill);
            compare(groundOf(0x52, false, other), VOXTheme.input);
        }
        app.hexModel.cursor = 0x51;
        editing.takeOver();
        app.hexModel.cursor = 0;
        compare(groundOf(0x51, false, true), VOXTheme.input);
        compare(groundOf(0x90, false, true), VOXTheme.differentFill);
        editing.compare.stop();
        compare(groundOf(0x90), VOXTheme.input);
    }

    // The editor is made, and drawn, while it is hidden.
    function test_textsAreDrawnWhenItIsShown_data() {
        return [{ tag: "file-before", before: true }, { tag: "file-after" }, { tag: "shown-again", twice: true }];
    }

    function test_textsAreDrawnWhenItIsShown(data) {
        if (data.before)
            fixture.fillHex(1000);
        makeAllViews();
        render();
        const rows = openEditor(1000);
        if (data.twice) {
            app.showHex = false;
            render();
            fixture.fillHex(2000);
            render();
            app.showHex = true;
            render();
        }
        const image = grabImage(window.contentItem);
        const grid = rows.grid;
        for (let row = 0; row < 20; ++row)
            verify(isInked(image, row, grid.digitsX, grid.digitsX + 48 * grid.pitch), row);
    }

    function test_textsAreDrawn() {
        const rows = openEditor(56);
        app.hexModel.cursor = 0;
        render();
        const pitch = widthOf("0".repeat(47)) / 47;
        const image = grabImage(window.contentItem);
        for (const row of [1, 2, 3]) {
            const bytes = row < 3 ? 16 : 8;
            const texts = shownRows()[row].children[0].children;
            for (const [column, length] of [[0, 8], [1, 3 * bytes - 1]]) {
                const start = texts[column].mapToItem(rows, 0, 0).x;
                compare(texts[column].text.length, length);
                for (const place of [0, 1, length - 2, length - 1])
                    verify(isInked(image, row, start + place * pitch, start + (place + 1) * pitch), [row, place]);
                verify(!isInked(image, row, start - 4, start - 1));
                verify(!isInked(image, row, start + length * pitch + 1, start + (length + 1) * pitch));
            }
        }
        const characters = shownRows()[2].children[0].children[2];
        const start = characters.mapToItem(rows, 0, 0).x;
        compare(characters.text, " !\"#$%&'()*+,-./");
        verify(!isInked(image, 2, start, start + pitch));
        // Each glyph is its own.
        const cells = new Set();
        for (let place = 1; place < 16; ++place)
            cells.add(inkOf(image, 2, start + place * pitch, start + (place + 1) * pitch));
        compare(cells.size, 15);
        for (let place = 1; place < 16; ++place)
            verify(isInked(image, 2, start + place * pitch, start + (place + 1) * pitch), place);
        verify(!isInked(image, 2, start + 16 * pitch + 1, start + 18 * pitch));
    }

    function test_cursorsByteIsMarked_data() {
        return [
            { tag: "first", cursor: 0, row: 0, column: 0 },
            { tag: "within", cursor: 0x25, row: 2, column: 5 },
            { tag: "last-of-a-row", cursor: 0x1f, row: 1, column: 15 }
        ];
    }

    function test_cursorsByteIsMarked(data) {
        openEditor(1000);
        app.hexModel.cursor = data.cursor;
        const cursorMark = mark("cursorMark");
        compare(cursorMark.visible, true);
        verifyMarks(cursorMark, data.row * 20, data.column, data.column + 1);
        compare(find("digitsMark", cursorMark).border.color, VOXTheme.orangeBright);
    }

    function test_cursorsMarkScrollsWithItsRow() {
        const rows = openEditor(100000);
        app.hexModel.cursor = 0x53;
        rows.scrollTo(2.25);
        verifyMarks(mark("cursorMark"), 55, 3, 4);
        rows.scrollTo(500);
        compare(mark("cursorMark").visible, false);
        rows.scrollTo(0);
        compare(mark("cursorMark").visible, true);
    }

    function test_nothingIsMarkedInAnEmptyBuffer() {
        app.showHex = true;
        render();
        compare(mark("cursorMark").visible, false);
        compare(matchMarks().length, 0);
    }

    function test_matchIsMarked_data() {
        return [
            { tag: "one-byte", query: "25", rows: [[2, 5, 6]] },
            { tag: "up-to-row-end", query: "2E 2F", rows: [[2, 14, 16]] },
            { tag: "over-row-end", query: "1F 20", rows: [[1, 15, 16], [2, 0, 1]] },
            { tag: "three-rows", query: "1D 1E 1F 20 21 22 23 24 25 26 27 28 29 2A 2B 2C 2D 2E 2F 30",
              rows: [[1, 13, 16], [2, 0, 16], [3, 0, 1]] }
        ];
    }

    function test_matchIsMarked(data) {
        openEditor(200);
        compare(matchMarks().length, 0);
        find("hexSearchField").text = data.query;
        click("hexFindButton");
        const marks = matchMarks();
        compare(marks.length, data.rows.length);
        data.rows.forEach(([row, first, end], i) => verifyMarks(marks[i], row * 20, first, end));
        compare(find("digitsMark", marks[0]).border.color, VOXTheme.matchEdge);
        // The cursor stands on its first byte.
        const [row, first] = data.rows[0];
        verifyMarks(mark("cursorMark"), row * 20, first, first + 1);
    }

    function test_matchMarkEnds_data() {
        return [
            { tag: "not-found", act: () => app.hexFind("zzz") },
            { tag: "patched", act: () => app.hexPatch("00") },
            { tag: "another-file", act: () => fixture.fillHex(300) }
        ];
    }

    function test_matchMarkEnds(data) {
        openEditor(200);
        app.hexFind("1F 20");
        compare(matchMarks().length, 2);
        app.hexModel.cursor = 0x20;
        compare(matchMarks().length, 2);
        data.act();
        tryVerify(() => matchMarks().length === 0);
    }

    function test_onlyRowsInSightAreMarked() {
        fixture.openFile("a.kvt", 100000, "x".repeat(50000));
        app.showHex = true;
        const rows = find("hexRows");
        tryVerify(() => rows.height > 0);
        app.hexFind("x".repeat(50000));
        render();
        compare(app.hexModel.matchLength, 50000);
        verify(matchMarks().length <= Math.ceil(rows.rowsInSight) + 1, matchMarks().length);
        rows.scrollTo(0);
        compare(matchMarks().length, 0);
        rows.scrollTo(4000.5);
        const marks = matchMarks();
        verifyMarks(marks[0], -10, 0, 16);
        verify(inRows(marks[marks.length - 1]).y + 20 >= rows.height);
    }

    function test_marksStandOverTheFills() {
        openEditor(200);
        app.hexFind("1F 20");
        const rows = find("hexRows");
        const order = Array.from(rows.children);
        const layer = mark("cursorMark").parent;
        const fills = order.indexOf(shownRows()[0].parent);
        verify(fills >= 0 && order.indexOf(layer) > fills);
    }

    function test_marksOfALargeFile() {
        const rows = openEditor(300 * 1024 * 1024);
        app.hexModel.cursor = 314572799;
        app.hexModel.cursor = 314572799 - 16;
        render();
        const row = shownRows().find(shown => shown.current);
        verifyMarks(mark("cursorMark"), row.y, 15, 16);
        compare(rows.rowCount, 19660800);
    }

    function test_menuCopies_data() {
        return [
            { tag: "offset", entry: "copyOffset", copied: "00000020", status: "Offset copied." },
            { tag: "hex", entry: "copyHex", copied: "20 21 22 23 24 25 26 27", status: "Hex copied." },
            { tag: "text", entry: "copyText", copied: " !\"#$%&'", status: "Text copied." }
        ];
    }

    function test_menuCopies(data) {
        const rows = openEditor(40);
        app.hexModel.cursor = 7;
        const menu = rightClick(rows, 2);
        compare(app.hexModel.cursor, 7);
        compare(find("menuRow").visible, true);
        compare(inRows(find("menuRow")).y, 40);
        mouseClick(find(data.entry));
        compare(app.status, data.status);
        compare(app.statusOK, 1);
        compare(clipboard(), data.copied);
        tryCompare(menu, "visible", false);
        compare(find("menuRow").visible, false);
        compare(app.hexModel.cursor, 7);
        compare(app.showHex, true);
    }

    function test_menuByKeyIsAboutTheCurrentRow_data() {
        return [
            { tag: "menu-key", key: Qt.Key_Menu, modifiers: Qt.NoModifier },
            { tag: "shift-f10", key: Qt.Key_F10, modifiers: Qt.ShiftModifier }
        ];
    }

    function test_menuByKeyIsAboutTheCurrentRow(data) {
        const rows = openEditor(10000);
        app.hexModel.cursor = 0x1234;
        rows.scrollTo(0);
        rows.forceActiveFocus();
        keyClick(data.key, data.modifiers);
        const menu = find("hexMenu");
        tryCompare(menu, "opened", true);
        verify(shownRows().some(row => row.current));
        compare(find("copyOffset").highlighted, true);
        keyClick(Qt.Key_Down);
        keyClick(Qt.Key_Return);
        tryCompare(menu, "visible", false);
        compare(app.status, "Hex copied.");
        verify(clipboard().startsWith("30 31 32 "));
        keyClick(Qt.Key_F10);
        compare(menu.visible, false);
    }

    function test_escapeClosesTheMenuOnly() {
        const rows = openEditor(100);
        const menu = rightClick(rows, 1);
        keyClick(Qt.Key_Escape);
        tryCompare(menu, "visible", false);
        compare(app.showHex, true);
        tryCompare(window, "activeFocusItem", rows);
        keyClick(Qt.Key_Escape);
        compare(app.showHex, false);
    }

    function test_clickBesideTheMenuOnlyClosesIt() {
        const rows = openEditor(1000);
        const menu = rightClick(rows, 1);
        mouseClick(rows, 20, 10 * rows.rowHeight + 10);
        tryCompare(menu, "visible", false);
        compare(app.hexModel.cursor, 0);
        compare(app.showHex, true);
    }

    function test_menuWhereThereIsNothingToCopy() {
        app.showHex = true;
        const rows = find("hexRows");
        tryVerify(() => rows.height > 0);
        mouseClick(rows, 300, 200, Qt.RightButton);
        compare(find("hexMenu").visible, false);
        rightClick(rows, 0);
        compare(find("copyOffset").enabled, true);
        compare(find("copyHex").enabled, false);
        compare(find("copyText").enabled, false);
    }

    function test_menuLooks() {
        const rows = openEditor(100);
        const menu = rightClick(rows, 1);
        compare(menu.background.color, VOXTheme.panel);
        compare(menu.background.border.color, VOXTheme.border);
        for (const [name, text] of [["copyOffset", "Copy offset"], ["copyHex", "Copy hex"],
                                    ["copyText", "Copy text"]]) {
            const entry = find(name);
            compare(entry.Accessible.role, Accessible.MenuItem);
            compare(entry.Accessible.name, text);
            const label = entry.contentItem.children[0];
            compare(label.text, text);
            compare(label.color, VOXTheme.text);
            compare(label.textFormat, Text.PlainText);
        }
        mouseMove(find("copyHex"));
        tryCompare(find("copyHex"), "highlighted", true);
        compare(find("copyHex").background.color, VOXTheme.selection);
        compare(find("copyHex").contentItem.children[0].color, VOXTheme.accentText);
    }

    function test_menuKeepsClearOfTheWindowsEdges() {
        const rows = openEditor(100000);
        const lastRow = Math.floor(rows.height / rows.rowHeight) - 1;
        mouseClick(rows, rows.width - 30, lastRow * rows.rowHeight + 10, Qt.RightButton);
        const menu = find("hexMenu");
        tryCompare(menu, "opened", true);
        const place = inWindow(menu.contentItem);
        verify(place.x + place.width <= window.width && place.y + place.height <= window.height);
    }

    function test_findLeavesTheKeyboardInTheSearchField_data() {
        return [
            { tag: "find-from-field", button: "hexFindButton", before: "hexSearchField" },
            { tag: "next-from-field", button: "hexNextButton", before: "hexSearchField" },
            { tag: "find-from-rows", button: "hexFindButton", before: "hexRows" },
            { tag: "next-from-patch", button: "hexNextButton", before: "hexPatchField" }
        ];
    }

    function test_findLeavesTheKeyboardInTheSearchField(data) {
        openEditor(1000);
        const field = find("hexSearchField");
        field.text = "07 08";
        find(data.before).forceActiveFocus();
        click(data.button);
        compare(app.hexModel.cursor, 7);
        compare(window.activeFocusItem, field);
        keyClick(Qt.Key_Return);
        compare(app.hexModel.cursor, 263);
    }

    function test_spaceOnFindKeepsTheKeyboardThere() {
        openEditor(1000);
        find("hexSearchField").text = "07 08";
        find("hexSearchField").forceActiveFocus();
        keyClick(Qt.Key_Tab);
        compare(window.activeFocusItem, find("hexFindButton"));
        keyClick(Qt.Key_Space);
        compare(app.hexModel.cursor, 7);
        compare(window.activeFocusItem, find("hexFindButton"));
        keyClick(Qt.Key_Space);
        compare(app.hexModel.cursor, 263);
    }

    function test_focusSearchSelectsWhatWasSearchedFor() {
        const rows = openEditor(1000);
        const field = find("hexSearchField");
        field.text = "07 08";
        rows.forceActiveFocus();
        find("hexOverlay").focusSearch();
        compare(window.activeFocusItem, field);
        compare(field.selectedText, "07 08");
        type("9");
        compare(field.text, "9");
    }

    function test_findNextUsesTheFieldAndLeavesTheKeyboard() {
        const rows = openEditor(1000);
        find("hexSearchField").text = "07 08";
        rows.forceActiveFocus();
        find("hexOverlay").findNext();
        compare(app.hexModel.cursor, 7);
        find("hexOverlay").findNext();
        compare(app.hexModel.cursor, 263);
        compare(window.activeFocusItem, rows);
        find("hexSearchField").text = "";
        find("hexOverlay").findNext();
        compare(app.status, "Enter hex or ASCII to search.");
    }

    function test_returnInThePatchFieldApplies(data) {
        openEditor(64);
        const field = find("hexPatchField");
        field.text = "41 42";
        field.forceActiveFocus();
        keyClick(data.key);
        compare(shownRows()[0].digits.slice(0, 8), "41 42 02");
        compare(app.status, "Patched 2 byte(s).");
        compare(app.showHex, true);
    }

    function test_returnInThePatchFieldApplies_data() {
        return [{ tag: "return", key: Qt.Key_Return }, { tag: "enter", key: Qt.Key_Enter }];
    }

    function test_rowsSayWhatTheyAre() {
        openEditor(17);
        const row = shownRows()[1];
        compare(row.Accessible.role, Accessible.ListItem);
        compare(row.Accessible.name, "Offset 00000010, bytes 10, text .");
    }
}
