import QtQuick
import QtTest
import KvtEditor

// A test of the whole window around a fresh controller. Any warning fails it.
TestCase {
    id: root

    property var window: null
    property int fetchedBefore: 0
    // Whether the window shows its own dialogs for files and folders. Qt's can be answered by their properties.
    property bool ownFileDialogs: false

    when: windowShown

    function init() {
        // Said now and then: the first two by the folder list of Qt's file dialog when its folder changes, the last by
        // Qt 6.11 while the window of the test before is taken away.
        failOnWarning(new RegExp("^(?!DelegateModel::cancel: index out range"
            + "|endResetModel called on QQuickFolderListModel|.*VOXHint: Cannot find member data)"));
        fixture.reset();
        fetchedBefore = fixture.fetchedPaths().length;
        // Most tests need a view or two: the others would take longer to make than the test itself.
        window = newWindow({ prepares: false, ownFileDialogs: ownFileDialogs });
        window.requestActivate();
        tryVerify(() => window.active, 60000);
        render();
        // Under Quick Test the first key of a process does not reach a window beside its own.
        keyClick(Qt.Key_Shift);
    }

    function newWindow(properties: var): var {
        return createTemporaryObject(rootView, root, properties);
    }

    function cleanupTestCase() {
        tryVerify(() => fixture.allArrived());
    }

    function makeAllViews(): void {
        window.prepares = true;
        tryVerify(() => window.complete, 60000);
    }

    // The item or dialog of that name. The views that were not shown yet are made for it where need be.
    function find(name: string, within: var): var {
        const found = () => fixture.find(within ?? window.contentItem, name) ?? findChild(window, name);
        if (!found())
            makeAllViews();
        const item = found();
        verify(item, "there is no " + name);
        return item;
    }

    // Draws the window, whether or not anything changed: layouts are done and every text was looked at.
    function render(): void {
        verify(fixture.draw(window));
    }

    function input(name: string): var {
        return find("field", find(name));
    }

    function itemsIn(item: var, matches: var): var {
        return fixture.visibleItems(item).filter(matches);
    }

    // The button of that text in a dialog of our own.
    function button(text: string): var {
        return itemsIn(window.overlayItem, item => item.clicked !== undefined && item.text === text)[0];
    }

    // Says that the file may be written over.
    function confirmOverwriting(): void {
        tryVerify(() => button("Yes") !== undefined);
        verify(app.status !== "Saved.");
        render();
        mouseClick(button("Yes"));
    }

    function type(text: string): void {
        for (const character of text)
            keyClick(character);
    }

    function click(name: string): void {
        mouseClick(find(name));
    }

    // Presses a key and holds it until it has repeated.
    function hold(key: int): void {
        keyPress(key);
        for (let i = 0; i < 3; ++i)
            fixture.repeatKey(window, key, Qt.NoModifier);
        keyRelease(key);
    }

    // Nothing but that many requests was sent since the server had seen `before` of them. A request is seen
    // only later than it was sent: one of our own follows, and all that were sent until then are waited for.
    function verifySent(before: int, count: int): void {
        app.loadTicket("fence");
        tryVerify(() => fixture.allArrived());
        compare(fixture.requestCount(), before + count + 1);
    }

    function verifyNothingSent(before: int): void {
        verifySent(before, 0);
    }

    // No text that is shown fetched a picture. It would be asked for only later: so the pictures of two texts
    // that do fetch are waited for, one after the other, for the newest request may be the first to go.
    function verifyNothingFetched(): void {
        render();
        for (let i = 0; i < 2; ++i) {
            const path = "/control" + fixture.fetchedPaths().length + ".ppm";
            fixture.answerNext("P3 1 1 255 0 0 0 ");
            createTemporaryObject(fetchingText, window.contentItem,
                { text: "<img src='" + fixture.address(path.slice(1)) + "'>" });
            tryVerify(() => fixture.fetchedPaths().includes(path));
        }
        const others = fixture.fetchedPaths().slice(fetchedBefore).filter(path => !path.startsWith("/control"));
        compare(others, []);
    }

    function inWindow(item: var): rect {
        return item.mapToItem(null, 0, 0, item.width, item.height);
    }

    function luminance(shade: color): real {
        const linear = [shade.r, shade.g, shade.b].map(
            part => part <= 0.03928 ? part / 12.92 : Math.pow((part + 0.055) / 1.055, 2.4));
        return 0.2126 * linear[0] + 0.7152 * linear[1] + 0.0722 * linear[2];
    }

    function contrast(one: color, other: color): real {
        const both = [luminance(one), luminance(other)].sort((a, b) => b - a);
        return (both[0] + 0.05) / (both[1] + 0.05);
    }

    Component {
        id: fetchingText

        Text {
            textFormat: Text.RichText
        }
    }

    Component {
        id: rootView

        RootView {}
    }
}
