import QtQuick
import QtTest
import KvtEditor

ViewTest {
    name: "RootView"

    readonly property var keys: ["main", "convert", "segments", "search", "sorter", "xdf", "patcher", "tools",
        "stock", "feedback"]

    function highlighted(): var {
        return keys.filter(key => find("nav_" + key).current);
    }

    function test_window() {
        compare(window.title, "VOX - KVT Editor");
        compare(window.width, 1440);
        compare(window.height, 900);
        compare(window.minimumWidth, 1100);
        compare(window.minimumHeight, 720);
        compare(window.color, VOXTheme.bg);
        verify(window.visible);
    }

    // As on a screen that is smaller than the window may be.
    function test_smallScreenIsScrolled() {
        verify(!find("widthBar").visible && !find("heightBar").visible);
        window.width = 800;
        window.height = 500;
        tryCompare(window.contentItem, "height", 500);
        compare(find("stage").width, 1100);
        verify(find("widthBar").visible && find("heightBar").visible);
        const footer = find("footer");
        verify(inWindow(footer).top > 500);
        for (let i = 0; i < 20; ++i)
            mouseWheel(window.contentItem, 400, 20, 0, -120);
        render();
        compare(inWindow(footer).bottom, 500);
        // The keyboard takes the place along.
        find("nav_feedback").forceActiveFocus(Qt.TabFocusReason);
        find("nav_main").forceActiveFocus(Qt.TabFocusReason);
        render();
        verify(inWindow(find("nav_main")).top >= 0);
        input("vinField").forceActiveFocus(Qt.TabFocusReason);
        render();
        verify(inWindow(input("vinField")).right <= 800);
    }

    function lazyItems(item: var): var {
        const own = item instanceof LazyView ? [item.item] : [];
        return Array.from(item.children).reduce((items, child) => items.concat(lazyItems(child)), own);
    }

    // Before a frame was drawn there is the first view only; what is asked for then is there at once.
    function test_viewsAreMadeWhenAskedFor() {
        app.tab = "main";
        const early = newWindow({});
        const made = () => lazyItems(early.contentItem).filter(Boolean).map(item => item.objectName);
        verify(!early.complete);
        compare(made(), []);
        app.tab = "search";
        compare(made(), ["searchView"]);
        app.tab = "main";
        compare(made(), ["searchView"]);
        fixture.openFile("early.kvt", 64);
        app.showHex = true;
        compare(made(), ["searchView", "hexOverlay"]);
        app.showHex = false;
        tryVerify(() => early.complete, 60000);
        compare(made().length, 10);
    }

    function test_viewThatCannotBeMadeIsTold() {
        ignoreWarning(/Nowhere\.qml/);
        const view = createTemporaryObject(lazyView, window.contentItem, { file: "Nowhere.qml" });
        failed.target = view;
        failed.clear();
        view.make();
        compare(view.status, Loader.Error);
        compare(failed.count, 1);
    }

    SignalSpy {
        id: failed
        signalName: "failed"
    }

    Component {
        id: lazyView
        LazyView {
            wanted: false
        }
    }

    function test_tabChoosesTheView_data() {
        const titles = ["MAIN", "CONVERT", "SEGMENTS", "SEARCH", "SORTER", "XDF MAKER", "BIN PATCHER", "TOOLS",
            "STOCK FILES", "FEEDBACK"];
        return keys.map((key, index) => ({ tag: key, index: index, title: titles[index] }));
    }

    function test_tabChoosesTheView(data) {
        const stack = find("viewStack");
        compare(stack.count, 10);
        app.tab = data.tag === "main" ? "stock" : "main";
        compare(find("nav_" + data.tag).text, data.title);
        click("nav_" + data.tag);
        compare(app.tab, data.tag);
        compare(stack.currentIndex, data.index);
        compare(highlighted(), [data.tag]);
        compare(find("mainView").visible, data.tag === "main");
    }

    function test_unknownTabShowsTheFirstView() {
        app.tab = "stock";
        app.tab = "no such view";
        compare(find("viewStack").currentIndex, 0);
        verify(find("mainView").visible);
        compare(highlighted(), []);
    }

    function test_navigationButtonColours() {
        const button = find("nav_convert");
        compare(button.contentItem.color, VOXTheme.text);
        compare(button.background.color, VOXTheme.buttonFill);
        compare(button.background.border.width, 0);
        compare(button.background.radius, 8);
        compare(button.height, 36);
        app.tab = "convert";
        compare(button.contentItem.color, VOXTheme.orange);
        compare(button.background.color, VOXTheme.accent(0.15));
        compare(button.background.border.width, 1);
        compare(button.background.border.color, VOXTheme.orange);
    }

    function test_sidebarStaysWithinItsLimits_data() {
        return [{ tag: "smallest", width: 1100 }, { tag: "usual", width: 1440 }, { tag: "wide", width: 2600 }];
    }

    function test_sidebarStaysWithinItsLimits(data) {
        window.width = data.width;
        const sidebar = find("sidebar");
        tryVerify(() => find("header").width === data.width - sidebar.width);
        verify(sidebar.width >= 180 && sidebar.width <= 260, sidebar.width);
    }

    function test_logoIsThere() {
        const logo = find("logo");
        tryCompare(logo, "status", Image.Ready);
        compare(logo.height, 100);
    }

    function test_nothingIsCutOffInTheSmallestWindow() {
        window.width = 1100;
        window.height = 720;
        tryCompare(window.contentItem, "height", 720);
        for (const name of ["nav_stock", "nav_feedback", "updatesButton"]) {
            const place = inWindow(find(name));
            verify(place.x >= 0 && place.y >= 0, name);
            verify(place.x + place.width <= 1100 && place.y + place.height <= 720, name);
        }
        verify(inWindow(find("nav_stock")).bottom <= inWindow(find("nav_feedback")).top);
        const field = input("interfaceIDField");
        field.forceActiveFocus(Qt.TabFocusReason);
        const panel = inWindow(find("identifiersPanel"));
        tryVerify(() => inWindow(field).bottom <= panel.bottom && inWindow(field).top >= panel.top);
    }

    function test_headerButtons() {
        compare(find("versionLabel").text, "v4.0.2");
        compare(find("helpButton").width, 90);
        compare(find("updatesButton").width, 110);
        const opened = fixture.openedUrls().length;
        click("helpButton");
        verify(fixture.openedUrls().length > opened || app.statusOK === 0);
        const asked = fixture.requestCount();
        click("updatesButton");
        tryVerify(() => fixture.requestCount() === asked + 1);
        verify(fixture.lastRequestLine().includes("updates/"), fixture.lastRequestLine());
    }

    function test_footerShowsTheStatus() {
        const line = find("statusLine");
        compare(line.visible, false);
        app.setStatus("Saved.", 1);
        compare(line.visible, true);
        compare(line.text, "Saved.");
        compare(line.color, VOXTheme.success);
        app.setStatus("Not found.", 0);
        compare(line.color, VOXTheme.error);
        app.setStatus("Line one\n".repeat(50));
        verify(line.height <= find("footer").height);
        app.setStatus("word ".repeat(200000), 0);
        verify(line.height <= find("footer").height);
    }

    function test_busyMarkMovesNothing() {
        const mark = find("busyIndicator");
        app.setStatus("Sending.");
        const before = inWindow(find("statusLine"));
        const brand = inWindow(mark);
        compare(mark.running, false);
        fixture.startConversion();
        compare(app.busy, true);
        compare(mark.running, true);
        app.setStatus("Sending.");
        compare(inWindow(find("statusLine")), before);
        compare(inWindow(mark), brand);
    }

    function test_tabKeyWalksInReadingOrder() {
        const order = keys.map(key => find("nav_" + key)).concat(find("helpButton"), find("updatesButton"),
            input("fileNameField"), input("createdField"), input("versionField"), find("openFileButton"),
            find("hexEditorButton"), find("saveFileButton"), input("devEmailField"), input("devMessageField"),
            find("sendToDevButton"), input("vinField"), input("serialField"));
        order[0].forceActiveFocus(Qt.TabFocusReason);
        for (const item of order) {
            compare(window.activeFocusItem, item, item.objectName);
            keyClick(Qt.Key_Tab);
        }
    }

    function test_everyControlHasAName_data() {
        return ["nav_main", "nav_feedback", "helpButton", "updatesButton", "openFileButton", "hexEditorButton",
            "saveFileButton", "sendToDevButton", "hexSearchField", "hexFindButton", "hexNextButton",
            "hexCloseButton", "hexRows", "hexPatchField", "hexApplyButton", "hexWriteBackButton",
            "hexInfo"].map(name => ({ tag: name }));
    }

    function test_everyControlHasAName(data) {
        const item = find(data.tag);
        verify(item.Accessible.name !== "");
        verify(item.Accessible.role !== Accessible.NoRole);
    }
}
