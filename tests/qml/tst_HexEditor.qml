import QtQuick
import QtTest
import KvtEditor

ViewTest {
    name: "HexEditor"

    function openEditor(size: int): var {
        bed.fillHex(size);
        app.showHex = true;
        tryVerify(() => find("hexRows").height > 0);
        render();
        return find("hexRows");
    }

    // The delegates in sight, from the top.
    function shownRows(): var {
        const rows = find("hexRows");
        const shown = [];
        for (let i = 0; i < rows.children.length; ++i) {
            const row = rows.children[i];
            const inSight = row.visible && row.y < rows.height && row.y + row.height > 0;
            if (inSight && row.objectName.startsWith("hexRow"))
                shown.push(row);
        }
        return shown.sort((a, b) => a.y - b.y);
    }

    function test_overlayCoversTheWindow() {
        openEditor(100);
        const overlay = find("hexOverlay");
        compare(inWindow(overlay), Qt.rect(0, 0, window.width, window.height));
        for (const name of ["sidebar", "header", "footer", "viewStack"]) {
            const place = inWindow(find(name));
            const middle = window.contentItem.childAt(place.x + place.width / 2, place.y + place.height / 2);
            compare(middle, overlay, name);
        }
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
        bed.openFile("a.kvt", 64);
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
        keyClick(Qt.Key_End);
        compare(app.hexModel.currentRow, 19660799);
        let shown = shownRows();
        compare(shown[shown.length - 1].offset, "12BFFFF0");
        compare(shown[shown.length - 1].y + 20, Math.round(rows.height));
        for (let i = 1; i < shown.length; ++i)
            compare(shown[i].y - shown[i - 1].y, 20);
        mouseWheel(rows, 100, 100, 0, 120);
        shown = shownRows();
        compare(parseInt(shown[1].offset, 16) - parseInt(shown[0].offset, 16), 16);
        keyClick(Qt.Key_Home);
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
            { tag: "home", key: Qt.Key_Home, from: 300, to: 0 },
            { tag: "end", key: Qt.Key_End, from: 3, to: 624 },
            { tag: "page-up-at-the-top", key: Qt.Key_PageUp, from: 3, to: 0 },
            { tag: "page-down-at-the-end", key: Qt.Key_PageDown, from: 620, to: 624 }
        ];
    }

    function test_keysMoveTheRow(data) {
        const rows = openEditor(10000);
        app.hexModel.clickRow(data.from);
        rows.forceActiveFocus();
        keyClick(data.key);
        compare(app.hexModel.currentRow, data.to);
        compare(app.hexModel.cursor, data.to * 16);
        verify(shownRows().some(row => row.current && row.y >= 0 && row.y + 20 <= rows.height));
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
        bed.openFile("a.kvt", 100000, "needle");
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

    function test_patchShowsAtOnce() {
        openEditor(64);
        app.hexModel.cursor = 16;
        find("hexPatchField").text = "41 42";
        click("hexApplyButton");
        compare(app.status, "Patched 2 byte(s).");
        compare(shownRows()[1].digits.slice(0, 8), "41 42 12");
        compare(shownRows()[1].characters.slice(0, 3), "AB.");
    }

    function test_anotherFileShowsAtOnce() {
        const rows = openEditor(100000);
        rows.forceActiveFocus();
        keyClick(Qt.Key_End);
        bed.fillHex(40);
        compare(rows.topRow, 0);
        compare(shownRows().length, 3);
        compare(app.hexModel.cursor, 39);
        compare(shownRows()[2].current, true);
    }

    function test_writeBackCloses() {
        bed.openFile("a.kvt", 64);
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
        // A fixed pitch in truth: sixteen pairs of any digits are equally wide.
        verify(texts[1].contentWidth > 0);
        compare(shownRows()[1].children[0].children[1].contentWidth, texts[1].contentWidth);
    }

    function test_rowsSayWhatTheyAre() {
        openEditor(17);
        const row = shownRows()[1];
        compare(row.Accessible.role, Accessible.ListItem);
        compare(row.Accessible.name, "Offset 00000010, bytes 10, text .");
    }
}
