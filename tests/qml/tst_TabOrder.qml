import QtQuick
import QtTest
import KvtEditor

// The way of the keyboard through each view: every control once, in reading order, and visibly so.
ViewTest {
    name: "TabOrder"

    readonly property var keys: ["main", "convert", "segments", "search", "sorter", "xdf", "patcher", "tools",
        "stock", "feedback"]
    readonly property var outside: keys.map(key => "nav_" + key).concat("helpButton", "updatesButton")

    function viewOf(key: string): var {
        return find("viewStack").itemAt(keys.indexOf(key));
    }

    function show(key: string): var {
        app.tab = key;
        render();
        return viewOf(key);
    }

    function takesTab(item: var): bool {
        return Boolean(item.activeFocusOnTab && item.visible && item.enabled);
    }

    function controlsIn(item: var): var {
        let found = takesTab(item) ? [item] : [];
        for (const child of Array.from(item.children))
            found = found.concat(controlsIn(child));
        return found;
    }

    function isInside(item: var, ancestor: var): bool {
        while (item && item !== ancestor)
            item = item.parent;
        return item === ancestor;
    }

    function cardOf(item: var): var {
        while (item && !(item instanceof VOXCard))
            item = item.parent;
        return item;
    }

    // One card after the other, each line by line.
    function readBefore(one: var, other: var): int {
        const cards = [one, other].map(item => inWindow(cardOf(item)));
        const places = [one, other].map(item => inWindow(item));
        const sameLine = places[0].top < places[1].bottom && places[1].top < places[0].bottom;
        return cards[0].x - cards[1].x || (sameLine ? places[0].x - places[1].x : places[0].y - places[1].y);
    }

    // What gets the keyboard from `start` on until it is back there, or has gone too far.
    function walk(start: var, modifiers: int): var {
        start.forceActiveFocus(Qt.TabFocusReason);
        const way = [];
        do {
            way.push(window.activeFocusItem);
            keyClick(Qt.Key_Tab, modifiers);
        } while (window.activeFocusItem !== start && way.length < 100);
        return way;
    }

    function spell(items: var): string {
        return items.map(item => item.Accessible.name + " (" + item.objectName + ")").join(", ");
    }

    function test_order_data() {
        return [
            { tag: "main", count: 18 },
            { tag: "convert", count: 19 },
            { tag: "segments", count: 18 },
            { tag: "search", count: 10 },
            { tag: "sorter", count: 9 },
            { tag: "xdf", count: 10 },
            { tag: "patcher", count: 4 },
            { tag: "tools", count: 10 },
            { tag: "stock", count: 13 },
            { tag: "feedback", count: 11 }
        ];
    }

    function test_order(data) {
        const view = show(data.tag);
        const expected = controlsIn(view).sort(readBefore);
        const start = find("nav_main");
        const way = walk(start, Qt.NoModifier);
        compare(way.slice(0, outside.length).map(item => item.objectName), outside);
        compare(spell(way.slice(outside.length)), spell(expected));
        compare(expected.length, data.count);
        const back = walk(start, Qt.ShiftModifier);
        compare(spell(back.slice(1).reverse()), spell(way.slice(1)));
    }

    function test_ring_data() {
        return keys.concat("outside").map(key => ({ tag: key }));
    }

    // Of each control, the middle of its left edge with the keyboard and without.
    function test_ring(data) {
        const controls = data.tag === "outside" ? outside.map(name => find(name))
            : controlsIn(show(data.tag));
        for (const control of controls) {
            control.forceActiveFocus(Qt.TabFocusReason);
            const ringed = edgeOf(window.activeFocusItem);
            find(control.objectName === "nav_main" ? "helpButton" : "nav_main").forceActiveFocus();
            const plain = edgeOf(control);
            verify(contrast(ringed, plain) > 1.5, spell([control]) + ": " + ringed + " on " + plain);
        }
    }

    function edgeOf(item: var): color {
        const place = inWindow(item);
        return grabImage(window.contentItem).pixel(place.x + 1, place.y + place.height / 2);
    }

    // Views are left in other ways than by a click on a tab.
    function test_keyboardLeavesWithTheView_data() {
        return [
            { tag: "field", from: "search", focused: () => input("searchNameField") },
            { tag: "list", from: "search", focused: () => find("searchList") },
            { tag: "button", from: "patcher", focused: () => find("patcherOpenXdfButton") }
        ];
    }

    function test_keyboardLeavesWithTheView(data) {
        show(data.from);
        data.focused().forceActiveFocus(Qt.TabFocusReason);
        const view = show("xdf");
        compare(window.activeFocusItem, controlsIn(view).sort(readBefore)[0]);
        const tab = find("nav_xdf");
        tab.forceActiveFocus(Qt.TabFocusReason);
        show("stock");
        compare(window.activeFocusItem, tab);
    }

    function test_modulesAreNoTrap() {
        fixture.openFile("two.kvt", 64);
        fixture.applyInfo({ modules: [{ title: "ECM", vin: "1", serial: "2", mainOS: "3" },
            { title: "TCM", vin: "4", serial: "5", mainOS: "6" }] });
        show("main");
        verify(find("moduleList").visible);
        const start = find("sendToDevButton");
        const way = walk(start, Qt.NoModifier);
        verify(way.length < 60, way.length);
        verify(way.some(item => isInside(item, find("moduleList"))));
        compare(way[way.length - 1], input("devMessageField"));
    }

    function test_hexEditorIsNoTrap() {
        fixture.openFile("truck.kvt", 4000);
        app.showHex = true;
        const start = find("hexSearchField");
        const way = walk(start, Qt.NoModifier);
        verify(way.length < 20, way.length);
        verify(way.every(item => isInside(item, find("hexOverlay"))), spell(way));
        for (const name of ["hexFindButton", "hexNextButton", "hexRows", "hexPatchField", "hexApplyButton",
                "hexWriteBackButton", "hexCloseButton"])
            verify(way.includes(find(name)), name);
    }

    function test_smallestWindow_data() {
        return keys.map(key => ({ tag: key }));
    }

    // What has the keyboard is scrolled into sight.
    function test_smallestWindow(data) {
        window.width = 1100;
        window.height = 720;
        tryCompare(window.contentItem, "height", 720);
        const view = show(data.tag);
        for (const control of controlsIn(view)) {
            control.forceActiveFocus(Qt.TabFocusReason);
            render();
            const place = inWindow(window.activeFocusItem);
            const card = inWindow(cardOf(control));
            verify(place.top >= card.top && place.bottom <= card.bottom, spell([control]) + " " + place);
            verify(place.left >= card.left && place.right <= card.right, spell([control]) + " " + place);
        }
    }
}
