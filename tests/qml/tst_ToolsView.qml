import QtQuick
import QtTest
import KvtEditor

ViewTest {
    id: root

    name: "ToolsView"

    readonly property var keys: ["vbfphf", "xcal", "ecfg", "j1939", "vin2hex", "checksum", "delco", "efd"]
    readonly property var ready: ["vbfphf", "xcal", "ecfg", "vin2hex", "delco"]

    function show(): void {
        app.tab = "tools";
        render();
    }

    function tile(key: string): var {
        return find("tile_" + key);
    }

    function openPopup(): var {
        show();
        tile("vin2hex").clicked();
        const popup = find("vinHexPopup");
        tryCompare(popup, "opened", true);
        return popup;
    }

    function popupInput(name: string): var {
        return find("field", find(name, find("vinHexPopup").contentItem));
    }

    function test_tiles_data() {
        return [
            { tag: "vbfphf", text: "VOX - VBF/PHF <-> BIN", picture: "vbf.png" },
            { tag: "xcal", text: "XCAL to BIN", picture: "xcal.png" },
            { tag: "ecfg", text: "ECFG2XDF (Beta)", picture: "ecfg.png" },
            { tag: "j1939", text: "J1939 DTC Converter", picture: "j1939.png" },
            { tag: "vin2hex", text: "VIN2HEX / ASCII", picture: "vin2hex.png" },
            { tag: "checksum", text: "Checksum Calculator", picture: "checksum.png" },
            { tag: "delco", text: "Delco Checksum GUI", picture: "delco.png" },
            { tag: "efd", text: "VOX EFD Reader", picture: "efd.png" }
        ];
    }

    function test_tiles(data) {
        show();
        const item = tile(data.tag);
        compare(item.text, data.text);
        compare(item.height, 150);
        const icon = find("icon", item);
        compare(String(icon.source), "qrc:/qt/qml/KvtEditor/src/ui/assets/tools/" + data.picture);
        tryCompare(icon, "status", Image.Ready);
        compare(icon.width, 60);
        compare(icon.height, 60);
        compare(icon.sourceSize.width, 180);
        const coming = !ready.includes(data.tag);
        compare(item.enabled, !coming);
        compare(find("scrim", item).visible, coming);
        compare(find("label", item).textFormat, Text.PlainText);
        compare(item.Accessible.name, coming ? data.text + ", coming soon" : data.text);
    }

    function test_threeTilesStandInARow() {
        for (const width of [1440, 1100]) {
            window.width = width;
            tryCompare(window.contentItem, "width", width);
            show();
            keys.forEach((key, index) => {
                const first = inWindow(tile(keys[0]));
                const place = inWindow(tile(key));
                fuzzyCompare(place.width, first.width, 1, key);
                compare(place.y, first.y + Math.floor(index / 3) * 158, key);
                fuzzyCompare(place.x, first.x + index % 3 * (first.width + 8), 2, key);
                const label = find("label", tile(key));
                verify(label.width <= place.width && !label.truncated, key);
                verify(label.contentWidth <= label.width, key);
            });
        }
    }

    function test_hoverTintsWhatIsEnabled_data() {
        return keys.map(key => ({ tag: key, tinted: ready.includes(key) }));
    }

    function test_hoverTintsWhatIsEnabled(data) {
        show();
        const item = tile(data.tag);
        const tint = find("tint", item);
        compare(tint.visible, false);
        mouseMove(item);
        tryCompare(item, "hovered", true);
        compare(tint.visible, data.tinted);
        compare(item.background.border.color, data.tinted ? VOXTheme.orange : VOXTheme.border);
        mouseMove(find("nav_main"));
        tryCompare(item, "hovered", false);
        compare(tint.visible, false);
    }

    function test_tilesTakeTheKeyboard() {
        show();
        const order = ready.map(key => tile(key)).concat(find("xcalLayoutBox"),
            find("box", find("vbfSkipVerifyBox")), find("dtcField"), find("dtcDecodeButton"),
            find("dtcList"));
        order[0].forceActiveFocus(Qt.TabFocusReason);
        compare(order[0].background.border.color, VOXTheme.focusRing);
        compare(order[0].background.border.width, 2);
        for (const item of order) {
            compare(window.activeFocusItem, item, item.objectName);
            verify(item.Accessible.name !== "", item.objectName);
            keyClick(Qt.Key_Tab);
        }
    }

    function test_keysPressTheTile_data() {
        return [{ tag: "return", key: Qt.Key_Return }, { tag: "enter", key: Qt.Key_Enter },
            { tag: "space", key: Qt.Key_Space }];
    }

    function test_keysPressTheTile(data) {
        show();
        tile("delco").forceActiveFocus(Qt.TabFocusReason);
        keyClick(data.key);
        compare(app.status, "Opened Delco Checksum GUI.");
    }

    function test_converterIsLookedFor() {
        show();
        click("tile_vbfphf");
        compare(app.status, "VBF/PHF converter was not found.");
        compare(app.statusOK, 0);
    }

    function test_pageOfTheService() {
        show();
        click("tile_delco");
        compare(app.status, "Opened Delco Checksum GUI.");
        compare(fixture.openedUrls().pop(), app.serviceUrl("checksum-gui.html"));
    }

    function test_heldKeyStartsOnce() {
        show();
        const opened = fixture.openedUrls().length;
        find("tile_delco").forceActiveFocus(Qt.TabFocusReason);
        hold(Qt.Key_Space);
        compare(fixture.openedUrls().length, opened + 1);
        hold(Qt.Key_Return);
        compare(fixture.openedUrls().length, opened + 2);
        keyClick(Qt.Key_Return, Qt.ControlModifier);
        keyClick(Qt.Key_Enter, Qt.ShiftModifier);
        compare(fixture.openedUrls().length, opened + 2);
        const box = find("box", find("vbfSkipVerifyBox"));
        box.forceActiveFocus(Qt.TabFocusReason);
        hold(Qt.Key_Space);
        compare(app.vbfSkipVerify, true);
        compare(box.checked, true);
    }

    function test_doubleClickStartsOnce() {
        show();
        const opened = fixture.openedUrls().length;
        mouseDoubleClickSequence(find("tile_delco"));
        compare(fixture.openedUrls().length, opened + 1);
    }

    function test_conversions_data() {
        return [{ tag: "xcal", operation: "convert_xcal2bin" },
            { tag: "ecfg", operation: "convert_ecfg2xdf" }];
    }

    function test_conversions(data) {
        fixture.writeFile("100% a#b.xcal");
        show();
        const asked = fixture.requestCount();
        const dialog = find("toolConvertDialog");
        compare(dialog.nameFilters, ["Calibration (*.vbf *.xcal *.hex *.phf *.ecfg *)"]);
        click("tile_" + data.tag);
        tryVerify(() => dialog.visible);
        dialog.close();
        dialog.selectedFile = fixture.urlOf(fixture.tempPath("100% a#b.xcal"));
        dialog.accepted();
        tryVerify(() => fixture.requestCount() === asked + 1);
        tryVerify(() => fixture.requestBodies().includes(data.operation));
        verify(fixture.requestBodies().includes("100% a#b.xcal"));
    }

    function test_conversionsWaitForTheService() {
        show();
        const waiting = ["tile_xcal", "tile_ecfg", "xcalLayoutBox"].map(name => find(name)).concat(
            find("box", find("vbfSkipVerifyBox")));
        for (const item of waiting)
            verify(item.enabled, item.objectName);
        fixture.startConversion();
        compare(app.busy, true);
        for (const item of waiting)
            verify(!item.enabled, item.objectName);
        verify(tile("vin2hex").enabled);
        compare(find("scrim", tile("xcal")).visible, false);
    }

    function test_layoutIsTheControllers() {
        show();
        const box = find("xcalLayoutBox");
        compare(box.model, ["kvt", "efi", "bench", "flat", "allseg"]);
        compare(box.displayText, "kvt");
        compare(box.height, 36);
        compare(box.background.color, VOXTheme.input);
        compare(box.background.radius, 8);
        verify(box.width >= 100, box.width);
        app.xcalMode = "flat";
        compare(box.displayText, "flat");
        box.forceActiveFocus(Qt.TabFocusReason);
        keyClick(Qt.Key_Down);
        compare(app.xcalMode, "allseg");
        keyClick(Qt.Key_Up);
        keyClick(Qt.Key_Up);
        compare(app.xcalMode, "bench");
        app.xcalMode = "kvt";
        compare(box.displayText, "kvt");
    }

    function test_layoutFromTheList() {
        show();
        const box = find("xcalLayoutBox");
        mouseClick(box);
        tryVerify(() => box.popup.opened);
        compare(box.popup.background.color, VOXTheme.panel);
        const entry = box.popup.contentItem.itemAtIndex(2);
        compare(entry.contentItem.text, "bench");
        compare(entry.contentItem.textFormat, Text.PlainText);
        mouseMove(entry);
        tryVerify(() => entry.highlighted);
        compare(entry.background.color, VOXTheme.selection);
        mouseClick(entry);
        tryVerify(() => !box.popup.visible);
        compare(app.xcalMode, "bench");
        compare(box.displayText, "bench");
        box.forceActiveFocus(Qt.TabFocusReason);
        keyClick(Qt.Key_Space);
        tryVerify(() => box.popup.opened);
        keyClick(Qt.Key_Down);
        keyClick(Qt.Key_Return);
        compare(app.xcalMode, "flat");
        tryVerify(() => !box.popup.visible);
    }

    function test_choiceIsNotMadeByTheWheel() {
        show();
        mouseWheel(find("xcalLayoutBox"), 10, 10, 0, -120);
        compare(app.xcalMode, "kvt");
    }

    function test_skippingVerificationIsBoundBothWays() {
        show();
        const check = find("vbfSkipVerifyBox");
        compare(check.text, "VBF skip verification blocks");
        compare(check.checked, false);
        mouseClick(find("box", check));
        compare(app.vbfSkipVerify, true);
        app.vbfSkipVerify = false;
        compare(check.checked, false);
        mouseClick(find("box", check));
        compare(app.vbfSkipVerify, true);
    }

    function test_decoding_data() {
        return [{ tag: "button", decode: () => click("dtcDecodeButton") },
            { tag: "return", decode: () => keyClick(Qt.Key_Return) }];
    }

    function test_decoding(data) {
        show();
        const list = find("dtcList");
        compare(find("dtcField").placeholderText, "Paste a DM1 message");
        compare(find("dtcEmptyLine").text, "Tool output appears here.");
        verify(find("dtcEmptyLine").visible);
        find("dtcField").forceActiveFocus();
        type("04 FF 5B 00 03 01 00 00 00 00");
        data.decode();
        compare(app.status, "2 DTC(s).");
        compare(list.count, 2);
        verify(!find("dtcEmptyLine").visible);
        render();
        const line = find("line", find("dtcRow0"));
        compare(line.text, "SPN 91  FMI 3 (voltage high)  OC 1  lamp 4  [5B000301]");
        compare(line.textFormat, Text.PlainText);
        compare(line.wrapMode, Text.Wrap);
        compare(line.font.pixelSize, 12);
        compare(line.font.family, VOXTheme.fixedFamily);
        verify(inWindow(line).right <= inWindow(list).right);
    }

    function test_longMessageScrolls() {
        show();
        app.decodeJ1939("00 00" + " 5B 00 03 01".repeat(300));
        const list = find("dtcList");
        compare(list.count, 300);
        list.forceActiveFocus(Qt.TabFocusReason);
        keyClick(Qt.Key_End);
        render();
        verify(list.contentY > list.originY);
        compare(find("line", find("dtcRow299")).text, app.j1939Rows[299].text);
    }

    function test_longDumpIsPastedWhole() {
        show();
        app.copyText("00 00" + " 5B 00 03 01".repeat(20000), "");
        find("dtcField").forceActiveFocus();
        keyClick(Qt.Key_V, Qt.ControlModifier);
        click("dtcDecodeButton");
        compare(app.status, "20000 DTC(s).");
    }

    function test_longTextIsTurnedWhole() {
        openPopup();
        popupInput("vinTextField").forceActiveFocus();
        app.copyText("A".repeat(40000), "");
        keyClick(Qt.Key_V, Qt.ControlModifier);
        compare(popupInput("vinHexField").text, "41 ".repeat(40000).trim());
        popupInput("hexInField").forceActiveFocus();
        app.copyText(popupInput("vinHexField").text, "");
        keyClick(Qt.Key_V, Qt.ControlModifier);
        compare(popupInput("asciiOutField").text, "A".repeat(40000));
    }

    function test_oneMegabyteIsShown_data() {
        return [
            { tag: "all-ff", digit: "F", count: 131071,
                text: "SPN 524287  FMI 31 (condition exists)  OC 127  lamp 255  [FFFFFFFF]" },
            { tag: "all-00", digit: "0", count: 131071,
                text: "SPN 0  FMI 0 (above normal (most severe))  OC 0  lamp 0  [00000000]" },
            { tag: "no-digits", digit: "x", count: 0, text: "" }
        ];
    }

    function test_oneMegabyteIsShown(data) {
        show();
        const list = find("dtcList");
        app.decodeJ1939(data.digit.repeat(1048576));
        compare(app.status, data.count + " DTC(s).");
        compare(app.statusOK, 1);
        compare(list.count, data.count);
        compare(find("dtcEmptyLine").visible, data.count === 0);
        list.forceActiveFocus(Qt.TabFocusReason);
        keyClick(Qt.Key_End);
        render();
        if (data.count > 0)
            compare(find("line", find("dtcRow" + (data.count - 1))).text, data.text);
        verify(list.contentItem.children.length < 200);
        app.decodeJ1939("04 FF 5B 00 03 01");
        compare(list.count, 1);
        render();
        compare(find("line", find("dtcRow0")).text,
            "SPN 91  FMI 3 (voltage high)  OC 1  lamp 4  [5B000301]");
    }

    function test_textToHex_data() {
        return [
            { tag: "empty", text: "", hex: "" },
            { tag: "letters", text: "1GC", hex: "31 47 43" },
            { tag: "blank", text: "A B", hex: "41 20 42" },
            { tag: "control", text: "\u0001\n", hex: "01 0A" },
            { tag: "latin", text: "é", hex: "E9" },
            { tag: "beyond-255", text: "€", hex: "20AC" },
            { tag: "beyond-4096", text: "Ā", hex: "100" },
            { tag: "beyond-16-bit", text: "\u{1F600}x", hex: "1F600 78" }
        ];
    }

    function test_textToHex(data) {
        compare(VinHex.hexOf(data.text), data.hex);
    }

    function test_hexToText_data() {
        return [
            { tag: "empty", hex: "", text: "" },
            { tag: "pairs", hex: "31 47 43", text: "1GC" },
            { tag: "lower-case", hex: "4a4B", text: "JK" },
            { tag: "separators", hex: "31,47;43-4A\n4B", text: "1GCJK" },
            { tag: "trailing-digit", hex: "31 47 4", text: "1G" },
            { tag: "one-digit", hex: "3", text: "" },
            { tag: "prefix-leaves-its-zero", hex: "0x31", text: "\u0003" },
            { tag: "no-digits", hex: "xyz <>", text: "" },
            { tag: "high", hex: "E9 FF", text: "éÿ" }
        ];
    }

    function test_hexToText(data) {
        compare(VinHex.asciiOf(data.hex), data.text);
    }

    function test_popup() {
        const popup = openPopup();
        compare(popup.modal, true);
        compare(popup.width, 480);
        compare(popup.background.color, VOXTheme.panel);
        compare(window.activeFocusItem, popupInput("vinTextField"));
        type("1G");
        compare(popupInput("vinHexField").text, "31 47");
        verify(popupInput("vinHexField").readOnly);
        popupInput("hexInField").forceActiveFocus();
        type("4A-4b5");
        compare(popupInput("asciiOutField").text, "JK");
        verify(popupInput("asciiOutField").readOnly);
        mouseClick(find("vinHexCloseButton", popup.contentItem));
        tryCompare(popup, "visible", false);
    }

    function test_popupGivesTheKeyboardBack() {
        show();
        tile("vin2hex").forceActiveFocus(Qt.TabFocusReason);
        keyClick(Qt.Key_Return);
        const popup = find("vinHexPopup");
        tryCompare(popup, "opened", true);
        compare(window.activeFocusItem, popupInput("vinTextField"));
        keyClick(Qt.Key_Escape);
        tryCompare(popup, "visible", false);
        compare(window.activeFocusItem, tile("vin2hex"));
    }

    function test_popupShowsAnythingAsItIs() {
        openPopup();
        popupInput("hexInField").text = "3C 69 6D 67 20 73 72 63 3D 27 78 27 3E 00 0A";
        compare(popupInput("asciiOutField").text, "<img src='x'>\u0000\n");
        verify(grabImage(window.contentItem.parent).width > 0);
    }

    function test_smallestWindow() {
        window.width = 1100;
        window.height = 720;
        show();
        tryCompare(window.contentItem, "height", 720);
        for (const name of ["tile_efd", "xcalLayoutBox", "vbfSkipVerifyBox"])
            verify(inWindow(find(name)).bottom <= inWindow(find("footer")).top - 20, name);
    }
}
