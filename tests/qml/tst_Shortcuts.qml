import QtQuick
import QtTest
import KvtEditor

// The keys of the whole window, and the hints that tell them.
ViewTest {
    name: "Shortcuts"

    readonly property var keys: ["main", "convert", "segments", "search", "sorter", "xdf", "patcher", "tools",
        "stock", "feedback"]
    readonly property var dialogs: ["openDialog", "saveDialog", "searchFolderDialog", "sorterFilesDialog",
        "convertInputDialog", "segmentFileDialog", "patcherDialog", "toolConvertDialog"]

    function ctrl(key: int): void {
        keyClick(key, Qt.ControlModifier);
    }

    function digitOf(tab: string): int {
        return Qt.Key_0 + (keys.indexOf(tab) + 1) % 10;
    }

    function isInside(item: var, ancestor: var): bool {
        while (item && item !== ancestor)
            item = item.parent;
        return item === ancestor;
    }

    function openHexEditor(): void {
        fixture.openFile("truck.kvt", 100, "needle");
        ctrl(Qt.Key_H);
        compare(app.showHex, true);
    }

    // A view that was not made yet has none.
    function openDialogs(): var {
        return dialogs.filter(name => fixture.find(window.contentItem, name)?.visible ?? false);
    }

    function test_dialogNames() {
        for (const name of dialogs)
            verify(!find(name).visible, name);
    }

    function test_tabs_data() {
        return keys.map(key => ({ tag: key }));
    }

    function test_tabs(data) {
        app.tab = data.tag === "main" ? "stock" : "main";
        ctrl(digitOf(data.tag));
        compare(app.tab, data.tag);
        const view = find("viewStack").itemAt(keys.indexOf(data.tag));
        verify(view.visible);
        verify(isInside(window.activeFocusItem, view), window.activeFocusItem);
    }

    function test_openDialog_data() {
        return keys.map(key => ({ tag: key }));
    }

    function test_openDialog(data) {
        app.tab = data.tag;
        ctrl(Qt.Key_O);
        compare(app.tab, "main");
        tryVerify(() => find("openDialog").visible);
        compare(openDialogs(), ["openDialog"]);
        keyClick(Qt.Key_Escape);
        tryVerify(() => !find("openDialog").visible);
    }

    function test_saveDialog_data() {
        return keys.map(key => ({ tag: key }));
    }

    function test_saveDialog(data) {
        fixture.openFile("truck.kvt", 100);
        app.tab = data.tag;
        ctrl(Qt.Key_S);
        tryVerify(() => find("saveDialog").visible);
        compare(openDialogs(), ["saveDialog"]);
        compare(app.tab, data.tag);
        keyClick(Qt.Key_Escape);
        tryVerify(() => !find("saveDialog").visible);
    }

    function test_keysFromWithinAField() {
        input("devMessageField").forceActiveFocus();
        type("note");
        ctrl(Qt.Key_2);
        compare(app.tab, "convert");
        ctrl(Qt.Key_1);
        ctrl(Qt.Key_O);
        tryVerify(() => find("openDialog").visible);
        find("openDialog").close();
        compare(find("devMessageField").text, "note");
    }

    function test_hexEditorNeedsAFile() {
        app.tab = "stock";
        ctrl(Qt.Key_H);
        compare(app.showHex, false);
        compare(app.status, "Open an KVT first.");
        compare(app.statusOK, 0);
    }

    function test_hexEditorOpensAndCloses_data() {
        return keys.map(key => ({ tag: key }));
    }

    function test_hexEditorOpensAndCloses(data) {
        app.tab = data.tag;
        openHexEditor();
        verify(isInside(window.activeFocusItem, find("hexOverlay")));
        ctrl(Qt.Key_H);
        compare(app.showHex, false);
        compare(app.tab, data.tag);
    }

    function test_escapeClosesTheHexEditor() {
        openHexEditor();
        keyClick(Qt.Key_Escape);
        compare(app.showHex, false);
        keyClick(Qt.Key_Escape);
        compare(app.showHex, false);
        verify(window.visible);
    }

    function test_nothingBehindTheHexEditorActs() {
        openHexEditor();
        app.setStatus("Ready.");
        for (const key of [Qt.Key_O].concat(keys.map(digitOf)))
            ctrl(key);
        compare(openDialogs(), []);
        compare(app.tab, "main");
        compare(app.status, "Ready.");
        compare(app.showHex, true);
    }

    function test_closesTheWindow() {
        let asked = 0;
        const refuse = close => {
            close.accepted = false;
            ++asked;
        };
        window.closing.connect(refuse);
        ctrl(Qt.Key_Q);
        compare(asked, 1);
        openHexEditor();
        ctrl(Qt.Key_Q);
        compare(asked, 2);
        window.closing.disconnect(refuse);
    }

    function test_savesFromTheHexEditor() {
        openHexEditor();
        ctrl(Qt.Key_S);
        tryVerify(() => openDialogs().includes("saveDialog"));
        keyClick(Qt.Key_Escape);
        tryCompare(find("saveDialog"), "visible", false);
        compare(app.showHex, true);
        tryVerify(() => isInside(window.activeFocusItem, find("hexOverlay")));
    }

    function test_findInTheHexEditor() {
        openHexEditor();
        find("hexRows").forceActiveFocus();
        ctrl(Qt.Key_F);
        compare(window.activeFocusItem, find("hexSearchField"));
        type("needle");
        keyClick(Qt.Key_F3);
        compare(app.hexModel.cursor, 94);
        ctrl(Qt.Key_F);
        type("00");
        compare(find("hexSearchField").text, "00");
        keyClick(Qt.Key_F3);
        compare(app.hexModel.cursor, 0);
        find("hexRows").forceActiveFocus();
        keyClick(Qt.Key_F3);
        compare(app.hexModel.cursor, 1);
    }

    function test_nextNeedsTheHexEditor() {
        fixture.openFile("truck.kvt", 100, "needle");
        find("hexSearchField").text = "needle";
        app.setStatus("Ready.");
        keyClick(Qt.Key_F3);
        compare(app.hexModel.cursor, 0);
        compare(app.status, "Ready.");
    }

    function test_searchField_data() {
        return [
            { tag: "search", field: "searchNameField" },
            { tag: "stock", field: "stockKeywordField" },
            { tag: "patcher", field: "patcherCalIdField" },
            { tag: "feedback", field: "ticketIdField" }
        ];
    }

    // Typing then replaces what was there.
    function test_searchField(data) {
        app.tab = data.tag;
        ctrl(Qt.Key_F);
        const field = input(data.field);
        compare(window.activeFocusItem, field);
        type("one");
        find("nav_main").forceActiveFocus();
        ctrl(Qt.Key_F);
        compare(window.activeFocusItem, field);
        type("two");
        compare(field.text, "two");
    }

    function test_viewsWithoutASearch_data() {
        return ["main", "convert", "segments", "sorter", "xdf", "tools"].map(key => ({ tag: key }));
    }

    function test_viewsWithoutASearch(data) {
        app.tab = data.tag;
        const button = find("nav_" + data.tag);
        button.forceActiveFocus();
        ctrl(Qt.Key_F);
        compare(window.activeFocusItem, button);
        compare(app.tab, data.tag);
    }

    function test_help_data() {
        return [{ tag: "view" }, { tag: "hex editor", hex: true }];
    }

    function test_help(data) {
        if (data.hex)
            openHexEditor();
        app.setStatus("Ready.", -1);
        const opened = fixture.openedUrls().length;
        keyClick(Qt.Key_F1);
        verify(fixture.openedUrls().length > opened || app.statusOK === 0);
        compare(app.showHex, data.hex === true);
    }

    function test_onlyOneDialogAtATime_data() {
        return [
            { tag: "open", tab: "main", button: "openFileButton", dialog: "openDialog" },
            { tag: "save", tab: "main", button: "saveFileButton", dialog: "saveDialog" },
            { tag: "search", tab: "search", button: "searchBrowseButton", dialog: "searchFolderDialog" },
            { tag: "base", tab: "segments", button: "pickBaseButton", dialog: "segmentFileDialog" }
        ];
    }

    function test_onlyOneDialogAtATime(data) {
        fixture.openFile("truck.kvt", 100);
        app.tab = data.tab;
        render();
        click(data.button);
        tryVerify(() => find(data.dialog).visible);
        app.setStatus("Ready.");
        for (const key of [Qt.Key_O, Qt.Key_S, Qt.Key_H, Qt.Key_F].concat(keys.map(digitOf)))
            ctrl(key);
        const opened = fixture.openedUrls().length;
        keyClick(Qt.Key_F1);
        compare(fixture.openedUrls().length, opened);
        compare(openDialogs(), [data.dialog]);
        compare(app.tab, data.tab);
        compare(app.showHex, false);
        compare(app.status, "Ready.");
        find(data.dialog).close();
    }

    function test_popupKeepsTheKeys() {
        app.tab = "tools";
        const popup = find("vinHexPopup");
        popup.open();
        tryVerify(() => popup.opened);
        ctrl(Qt.Key_O);
        ctrl(Qt.Key_1);
        compare(openDialogs(), []);
        compare(app.tab, "tools");
        keyClick(Qt.Key_Escape);
        tryVerify(() => !popup.visible);
        ctrl(Qt.Key_1);
        compare(app.tab, "main");
    }

    function test_dropDownKeepsTheKeys() {
        app.tab = "stock";
        const box = find("stockTypeBox");
        render();
        mouseClick(box);
        tryVerify(() => box.popup.opened);
        ctrl(Qt.Key_O);
        compare(openDialogs(), []);
        keyClick(Qt.Key_Escape);
        tryVerify(() => !box.popup.visible);
    }

    function test_heldKeyActsOnce() {
        fixture.openFile("truck.kvt", 100);
        ctrl(Qt.Key_H);
        for (let i = 0; i < 5; ++i) {
            fixture.repeatKey(window, Qt.Key_H, Qt.ControlModifier);
            compare(app.showHex, true);
        }
        ctrl(Qt.Key_H);
        for (let i = 0; i < 5; ++i)
            fixture.repeatKey(window, Qt.Key_O, Qt.ControlModifier);
        compare(openDialogs(), []);
    }

    function test_plainLettersAreText() {
        input("devMessageField").forceActiveFocus();
        type("oshf123");
        compare(find("devMessageField").text, "oshf123");
        compare(app.tab, "main");
        compare(openDialogs(), []);
    }

    // Made when it is first wanted.
    function hintOf(control: Item): var {
        return fixture.find(control, "hint");
    }

    function shownHint(control: Item): var {
        tryVerify(() => hintOf(control)?.visible === true);
        return hintOf(control);
    }

    function test_fieldHints_data() {
        return [
            { tag: "search", field: "searchNameField" },
            { tag: "stock", field: "stockKeywordField" },
            { tag: "patcher", field: "patcherCalIdField" }
        ];
    }

    function test_fieldHints(data) {
        app.tab = data.tag;
        const field = input(data.field);
        render();
        mouseMove(window.contentItem, 2, 2);
        verify(!hintOf(field)?.visible);
        mouseMove(field, field.width / 2, field.height / 2);
        const tip = shownHint(field);
        compare(tip.contentItem.text, "Ctrl+F");
        mouseMove(window.contentItem, 2, 2);
        tryVerify(() => !tip.visible);
    }

    function test_hints_data() {
        return [
            { tag: "nav_main", hint: "Ctrl+1" },
            { tag: "nav_convert", hint: "Ctrl+2" },
            { tag: "nav_segments", hint: "Ctrl+3" },
            { tag: "nav_search", hint: "Ctrl+4" },
            { tag: "nav_sorter", hint: "Ctrl+5" },
            { tag: "nav_xdf", hint: "Ctrl+6" },
            { tag: "nav_patcher", hint: "Ctrl+7" },
            { tag: "nav_tools", hint: "Ctrl+8" },
            { tag: "nav_stock", hint: "Ctrl+9" },
            { tag: "nav_feedback", hint: "Ctrl+0" },
            { tag: "helpButton", hint: "F1" },
            { tag: "openFileButton", hint: "Ctrl+O" },
            { tag: "hexEditorButton", hint: "Ctrl+H" },
            { tag: "saveFileButton", hint: "Ctrl+S" }
        ];
    }

    function test_hints(data) {
        const button = find(data.tag);
        compare(button.Accessible.description, data.hint);
        verify(!hintOf(button)?.visible);
        mouseMove(button);
        const tip = shownHint(button);
        compare(tip.contentItem.text, data.hint);
        verify(tip.delay > 0);
        const place = inWindow(tip.contentItem);
        verify(place.left >= 0 && place.top >= 0, place);
        verify(place.right <= window.width && place.bottom <= window.height, place);
        mouseMove(find("fileNameField"));
        tryVerify(() => !tip.visible);
        button.forceActiveFocus(Qt.TabFocusReason);
        tryVerify(() => tip.visible);
        find("updatesButton").forceActiveFocus(Qt.TabFocusReason);
        tryVerify(() => !tip.visible);
    }

    function test_hintsInTheHexEditor_data() {
        return [{ tag: "hexNextButton", hint: "F3" }, { tag: "hexCloseButton", hint: "Esc" }];
    }

    function test_hintsInTheHexEditor(data) {
        openHexEditor();
        const button = find(data.tag);
        mouseMove(button);
        const tip = shownHint(button);
        compare(tip.contentItem.text, data.hint);
        keyClick(Qt.Key_Escape);
        compare(app.showHex, false);
        tryVerify(() => !tip.visible);
    }

    function test_buttonsWithoutAKeyHaveNoHint() {
        const button = find("updatesButton");
        compare(button.hint, "");
        mouseMove(button);
        tryVerify(() => button.hovered);
        render();
        compare(hintOf(button), null);
    }

    function test_hintsAreMadeWhenTheyAreWanted() {
        mouseMove(window.contentItem, 2, 2);
        compare(hintOf(find("nav_stock")), null);
        compare(hintOf(find("saveFileButton")), null);
        compare(hintOf(input("searchNameField")), null);
    }

    function test_hintGoesWithAPress() {
        const button = find("saveFileButton");
        mouseMove(button);
        const tip = shownHint(button);
        mousePress(button);
        tryVerify(() => !tip.visible);
        mouseRelease(find("updatesButton"));
    }

    function test_hintGoesWithItsView() {
        const button = find("saveFileButton");
        mouseMove(button);
        button.forceActiveFocus(Qt.TabFocusReason);
        const tip = shownHint(button);
        ctrl(Qt.Key_9);
        tryVerify(() => !tip.visible);
    }

    // A hint on screen takes no key.
    function test_hintDoesNotKeepTheKeys() {
        const button = find("nav_sorter");
        button.forceActiveFocus(Qt.TabFocusReason);
        shownHint(button);
        ctrl(Qt.Key_4);
        compare(app.tab, "search");
    }

    // Everything that can be typed, chosen or ticked, in all views at once.
    function test_nothingEnteredIsLost() {
        const fields = {
            main: ["devEmailField", "devMessageField", "vinField", "serialField", "mainOSField",
                "systemField", "fuelField", "speedometerField", "engineDiagField", "engineOpField", "interfaceIDField"],
            search: ["searchNameField", "searchOsField", "searchMakeField", "searchYearField"],
            sorter: ["sorterOrderField"],
            xdf: ["xdfEmailField", "xdfPasswordField"],
            patcher: ["patcherCalIdField"],
            stock: ["stockMakeField", "stockModuleField", "stockFolderField", "stockOsField",
                "stockModelField", "stockKeywordField"],
            feedback: ["ticketNameField", "ticketEmailField", "ticketDescriptionField", "ticketIdField",
                "ticketReplyField"]
        };
        const boxes = { search: ["searchRecursiveBox"], sorter: ["sorterSubfoldersBox"],
            tools: ["vbfSkipVerifyBox"], segments: ["selectAllBox"] };
        const drops = { stock: ["stockTypeBox", "stockSortBox", "stockOrderBox"], tools: ["xcalLayoutBox"],
            feedback: ["ticketTypeBox"] };
        const each = (table, act) => keys.forEach(key => (table[key] ?? []).forEach((name, place) => {
            ctrl(digitOf(key));
            act(name, key.slice(0, 2) + place);
        }));
        const ticked = {};

        each(fields, (name, text) => {
            input(name).forceActiveFocus();
            input(name).selectAll();
            type(text);
        });
        each(boxes, name => {
            ticked[name] = !find(name).checked;
            find("box", find(name)).forceActiveFocus();
            keyClick(Qt.Key_Space);
        });
        each(drops, name => {
            find(name).forceActiveFocus();
            keyClick(Qt.Key_Down);
        });
        ctrl(Qt.Key_8);
        find("dtcField").forceActiveFocus();
        type("18 FE");

        for (const key of keys.concat(keys))
            ctrl(digitOf(key));
        each(fields, (name, text) => compare(find(name).text, text, name));
        each(boxes, name => compare(find(name).checked, ticked[name], name));
        each(drops, name => compare(find(name).currentIndex, 1, name));
        compare(find("dtcField").text, "18 FE");
    }
}
