import QtQuick
import QtTest
import KvtEditor

ViewTest {
    name: "HexInspector"

    function show(properties: var): var {
        const panel = createTemporaryObject(inspectorPanel, window.contentItem,
            Object.assign({ width: 340, height: 600 }, properties));
        render();
        return panel;
    }

    function shown(panel: var, cell: string): string {
        return find("content", find(cell, panel)).text;
    }

    function focusedCell(): string {
        return window.activeFocusItem.objectName;
    }

    function placeOf(item: var, panel: var): rect {
        return item.mapToItem(panel, 0, 0, item.width, item.height);
    }

    function test_values() {
        fixture.fillHex(256);
        app.hexModel.cursor = 0xC8;
        const panel = show();
        compare(shown(panel, "UInt8/0"), "200");
        compare(shown(panel, "Int8/0"), "-56");
        compare(shown(panel, "UInt16/0"), "51656");
        compare(shown(panel, "UInt16/1"), "51401");
        compare(shown(panel, "Binary/0"), "11001000");
        compare(fixture.find(panel, "UInt8/1"), null);
        app.hexModel.cursor = 255;
        compare(shown(panel, "UInt8/0"), "255");
        compare(shown(panel, "UInt16/0"), "–");
        compare(shown(panel, "UInt16/1"), "–");
        compare(find("UInt16/1", panel).Accessible.name, "UInt16 big endian, no value");
        compare(find("UInt8/0", panel).Accessible.name, "UInt8, 255");
    }

    function test_emptyFile() {
        fixture.fillHex(0);
        const panel = show();
        for (const name of ["UInt8/0", "Int64/1", "Double/0", "Binary/0", "ASCII/0"])
            compare(shown(panel, name), "–");
        verify(!find("inspectorSums", panel).visible);
        const before = app.status;
        mouseClick(find("ASCII/0", panel));
        panel.forceActiveFocus();
        keyClick(Qt.Key_Return);
        compare(app.status, before);
    }

    function test_selection() {
        fixture.fillHex(256);
        const panel = show();
        verify(find("inspectorSelectHint", panel).visible);
        verify(app.hexModel.select(0x30, 10));
        verify(!find("inspectorSelectHint", panel).visible);
        verify(find("inspectorSums", panel).visible);
        compare(shown(panel, "Length/0"), "A");
        compare(shown(panel, "Length/1"), "10");
        compare(shown(panel, "Sum 8/0"), "0D");
        compare(shown(panel, "Sum 16/0"), "020D");
        compare(shown(panel, "Sum 32/1"), "525");
        compare(shown(panel, "CRC-32/0"), "A684C7C6");
        compare(shown(panel, "SHA-256/0"),
            "84D89877F0D4041EFB6BF91A16F0248F\n2FD573E6AF05C19F96BEDB9F882F7882");
        app.hexModel.cursor = 0;
        verify(!find("inspectorSums", panel).visible);
    }

    function test_largeSelection() {
        fixture.fillHex(1048576);
        const panel = show();
        verify(app.hexModel.select(0, 1048576));
        compare(shown(panel, "Length/0"), "100000");
        compare(shown(panel, "Sum 8/0"), "…");
        compare(shown(panel, "SHA-256/0"), "…");
        tryCompare(find("Sum 32/0", panel), "value", "07F80000");
    }

    function test_clickCopies_data() {
        return [
            { tag: "little", cell: "UInt16/0", text: "12592", label: "UInt16 little endian" },
            { tag: "big", cell: "UInt16/1", text: "12337", label: "UInt16 big endian" },
            { tag: "single", cell: "ASCII/0", text: "0", label: "ASCII" },
            { tag: "sum", cell: "Sum 16/1", text: "525", label: "Sum 16 decimal" },
            { tag: "whole", cell: "SHA-256/0", label: "SHA-256",
                text: "84D89877F0D4041EFB6BF91A16F0248F2FD573E6AF05C19F96BEDB9F882F7882" }
        ];
    }

    function test_clickCopies(data) {
        fixture.fillHex(256);
        verify(app.hexModel.select(0x30, 10));
        const panel = show();
        const focused = window.activeFocusItem;
        mouseClick(find(data.cell, panel));
        // A second click would be for a change.
        tryCompare(app, "status", data.label + " copied.");
        compare(fixture.clipboardText(), data.text);
        compare(window.activeFocusItem, focused);
    }

    function test_keysCopy() {
        fixture.fillHex(256);
        app.hexModel.cursor = 0x41;
        const panel = show();
        panel.forceActiveFocus();
        compare(focusedCell(), "UInt8/0");
        keyClick(Qt.Key_C, Qt.ControlModifier);
        compare(fixture.clipboardText(), "65");
        keyClick(Qt.Key_Down);
        keyClick(Qt.Key_Down);
        keyClick(Qt.Key_Right);
        keyClick(Qt.Key_C, Qt.ControlModifier);
        compare(fixture.clipboardText(), "16706");
    }

    // What a selection adds up to cannot be changed.
    function test_returnCopiesASum() {
        fixture.fillHex(256);
        verify(app.hexModel.select(0x30, 10));
        const panel = show();
        panel.forceActiveFocus();
        keyClick(Qt.Key_End);
        keyClick(Qt.Key_Return);
        compare(app.status, "SHA-256 copied.");
        compare(fixture.find(panel, "valueField"), null);
    }

    function test_changesAValue_data() {
        return [
            { tag: "return", cell: "UInt16/1", key: Qt.Key_Return, typed: "513", bytes: "02 01" },
            { tag: "enter", cell: "UInt16/0", key: Qt.Key_Enter, typed: "0x102", bytes: "02 01" },
            { tag: "single", cell: "ASCII/0", key: Qt.Key_Return, typed: "z", bytes: "7A 42" },
            { tag: "same", cell: "UInt16/0", key: Qt.Key_Return, typed: "", bytes: "41 42" },
            { tag: "given-up", cell: "UInt16/0", key: Qt.Key_Escape, typed: "1", bytes: "41 42" }
        ];
    }

    function test_changesAValue(data) {
        fixture.fillHex(256);
        app.hexModel.cursor = 0x41;
        const panel = show();
        const cell = find(data.cell, panel);
        if (data.tag === "enter") {
            cell.forceActiveFocus();
            keyClick(Qt.Key_Return);
        } else {
            mouseDoubleClickSequence(cell);
        }
        const field = find("valueField", cell);
        verify(field.activeFocus);
        compare(field.selectedText, cell.value);
        for (const key of data.typed)
            keyClick(key);
        keyClick(data.key);
        compare(app.hexModel.data(app.hexModel.index(4, 0), HexModel.HexRole).substr(3, 5), data.bytes);
        verify(cell.activeFocus);
        tryVerify(() => !findChild(cell, "valueField"));
    }

    function test_refusedValueCanBeMended() {
        fixture.fillHex(256);
        const panel = show();
        const cell = find("UInt8/0", panel);
        cell.forceActiveFocus();
        keyClick(Qt.Key_Return);
        for (const key of "300")
            keyClick(key);
        keyClick(Qt.Key_Return);
        compare(app.status, "Not a value of type UInt8: 300");
        verify(find("valueField", cell).activeFocus);
        keyClick(Qt.Key_Backspace);
        keyClick(Qt.Key_Return);
        compare(app.hexModel.data(app.hexModel.index(0, 0), HexModel.HexRole).substr(0, 2), "1E");
        compare(app.status, "UInt8 set at 0x0.");
    }

    function test_copiesWhatWasClicked() {
        fixture.fillHex(256);
        app.hexModel.cursor = 7;
        const panel = show();
        mouseClick(find("UInt8/0", panel));
        app.hexModel.cursor = 9;
        tryCompare(app, "status", "UInt8 copied.");
        compare(fixture.clipboardText(), "7");
    }

    function test_doubleClickLeavesTheClipboard() {
        fixture.fillHex(256);
        app.copyText("99", "");
        const panel = show();
        mouseDoubleClickSequence(find("UInt8/0", panel));
        keyClick(Qt.Key_V, Qt.ControlModifier);
        keyClick(Qt.Key_Return);
        compare(app.status, "UInt8 set at 0x0.");
        compare(app.hexModel.data(app.hexModel.index(0, 0), HexModel.HexRole).substr(0, 2), "63");
        compare(fixture.clipboardText(), "99");
    }

    // Else what was typed for one place would be written at another.
    function test_movedCursorClosesTheField() {
        fixture.fillHex(256);
        const panel = show();
        const cell = find("UInt8/0", panel);
        mouseDoubleClickSequence(cell);
        keyClick("7");
        keyClick(Qt.Key_Down);
        verify(find("valueField", cell).activeFocus);
        app.hexModel.cursor = 5;
        tryVerify(() => !findChild(cell, "valueField"));
        verify(cell.activeFocus);
        compare(app.hexModel.data(app.hexModel.index(0, 0), HexModel.HexRole).substr(0, 17), "00 01 02 03 04 05");
    }

    function test_heldReturnOpensOnce() {
        fixture.fillHex(256);
        const panel = show();
        const cell = find("UInt8/0", panel);
        cell.forceActiveFocus();
        hold(Qt.Key_Return);
        verify(find("valueField", cell).activeFocus);
    }

    function test_leftFieldChangesNothing() {
        fixture.fillHex(256);
        const panel = show();
        mouseDoubleClickSequence(find("UInt8/0", panel));
        keyClick("7");
        find("Int8/0", panel).forceActiveFocus();
        tryVerify(() => !findChild(panel, "valueField"));
        compare(app.hexModel.data(app.hexModel.index(0, 0), HexModel.HexRole).substr(0, 2), "00");
    }

    function test_keysMove_data() {
        return [
            { tag: "narrow", wide: false, right: ["UInt16/0", "UInt16/1", "UInt16/1"], left: ["UInt16/0", "UInt16/0"] },
            { tag: "wide", wide: true, right: ["UInt16/0", "UInt16/1", "Float/0", "Float/1", "Sum 16/0", "Sum 16/1",
                "Sum 16/1"], left: ["Sum 16/0", "Float/1", "Float/0", "UInt16/1", "UInt16/0", "UInt16/0"] }
        ];
    }

    function test_keysMove(data) {
        fixture.fillHex(256);
        verify(app.hexModel.select(10, 10));
        const panel = show({ wide: data.wide, width: data.wide ? 1068 : 340 });
        panel.forceActiveFocus();
        const press = key => {
            keyClick(key);
            return focusedCell();
        };
        press(Qt.Key_Down);
        for (const [index, cell] of data.right.entries())
            compare(press(index === 0 ? Qt.Key_Down : Qt.Key_Right), cell);
        for (const cell of data.left)
            compare(press(Qt.Key_Left), cell);
        // The column is kept across rows with one value.
        compare(press(Qt.Key_Right), "UInt16/1");
        compare(press(Qt.Key_Up), "Int8/0");
        compare(press(Qt.Key_Home), "UInt8/0");
        compare(press(Qt.Key_Up), "UInt8/0");
        for (let i = 0; i < 5; ++i)
            press(Qt.Key_Down);
        compare(focusedCell(), "Int32/1");
        compare(press(Qt.Key_Down), "UInt64/1");
        compare(press(Qt.Key_End), "SHA-256/0");
        compare(press(Qt.Key_Down), "SHA-256/0");
        compare(press(Qt.Key_Up), "CRC-32/1");
        // Without a selection its table goes.
        app.hexModel.cursor = 0;
        compare(focusedCell(), "ASCII/0");
    }

    function test_oneTabStop() {
        fixture.fillHex(256);
        const panel = show();
        const stops = () => itemsIn(panel, item => item.activeFocusOnTab).map(item => item.objectName);
        compare(stops(), ["UInt8/0"]);
        panel.forceActiveFocus();
        keyClick(Qt.Key_Down);
        keyClick(Qt.Key_Down);
        keyClick(Qt.Key_Right);
        compare(stops(), ["UInt16/1"]);
        compare(find("inspectorHint", panel).text, "Ctrl+C copies, Return changes");
        keyClick(Qt.Key_Tab);
        verify(!panel.activeFocus);
        keyClick(Qt.Key_Backtab, Qt.ShiftModifier);
        compare(focusedCell(), "UInt16/1");
    }

    function test_fitsItsPlace_data() {
        return [
            { tag: "beside", width: 340, height: 600, wide: false, cut: ["Double/0", "Double/1"] },
            { tag: "below", width: 1068, height: 220, wide: true, cut: [] }
        ];
    }

    function test_fitsItsPlace(data) {
        fixture.fillHex(256);
        verify(app.hexModel.select(0, 200));
        const panel = show({ width: data.width, height: data.height, wide: data.wide });
        const cells = itemsIn(panel, item => item instanceof HexInspectorCell);
        compare(cells.length, 31);
        for (const cell of cells) {
            const place = placeOf(cell, panel);
            verify(place.left >= 0 && place.right <= data.width, cell.objectName);
            verify(place.top >= 0 && place.bottom <= data.height, cell.objectName);
            for (const other of cells) {
                const beside = placeOf(other, panel);
                verify(other === cell || place.right <= beside.left || beside.right <= place.left
                    || place.bottom <= beside.top || beside.bottom <= place.top, cell.objectName + other.objectName);
            }
        }
        const cut = cells.filter(cell => find("content", cell).truncated).map(cell => cell.objectName);
        compare(cut, data.cut);
        const sums = placeOf(find("inspectorSums", panel), panel);
        compare(sums.y < 100, data.wide);
    }

    function test_lowPanelScrollsAlong() {
        fixture.fillHex(256);
        const panel = show({ height: 200 });
        panel.forceActiveFocus();
        keyClick(Qt.Key_End);
        compare(focusedCell(), "ASCII/0");
        const place = placeOf(find("ASCII/0", panel), panel);
        verify(place.top > 36 && place.bottom < 200);
    }

    function test_cutValueShowsWholeOnHover() {
        fixture.fillHex(256);
        app.hexModel.cursor = 0x82;
        const panel = show();
        const cell = find("Double/0", panel);
        verify(find("content", cell).truncated);
        mouseMove(cell, 10, 10);
        tryVerify(() => findChild(cell, "wholeValue")?.opened ?? false);
        compare(findChild(cell, "wholeValue").fullText, cell.value);
    }

    function test_hiddenPanelRestsUntilShown() {
        fixture.fillHex(256);
        const panel = show({ visible: false });
        app.hexModel.cursor = 7;
        compare(shown(panel, "UInt8/0"), "–");
        panel.visible = true;
        compare(shown(panel, "UInt8/0"), "7");
    }

    Component {
        id: inspectorPanel

        HexInspectorPanel {
            hexModel: app.hexModel
        }
    }
}
