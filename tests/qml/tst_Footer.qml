import QtQuick
import QtTest
import KvtEditor

ViewTest {
    name: "Footer"

    function places(): var {
        return ["statusLine", "transferLabel", "busyIndicator"].map(name => {
            const place = inWindow(find(name));
            return [place.x, place.width];
        });
    }

    function test_barRunsWhileTheServiceWorks() {
        const bar = find("workBar");
        verify(!bar.visible);
        fixture.startConversion();
        verify(app.busy);
        verify(bar.visible);
        compare(inWindow(bar).width, inWindow(find("footer")).width);
        compare(inWindow(bar).y, inWindow(find("footer")).y);
        verify(!bar.Accessible.ignored);
    }

    function test_barRunsDuringASearch() {
        fixture.writeFile("folder/a.kvt");
        app.scanFolder(fixture.tempPath("folder"), true, "", "", "", "");
        verify(app.searchBusy);
        verify(find("workBar").visible);
        tryVerify(() => !app.searchBusy);
        verify(!find("workBar").visible);
    }

    function test_nothingMovesWhenWorkBegins() {
        app.setStatus("Saved.", 1);
        render();
        const before = places();
        fixture.startConversion();
        render();
        compare(places(), before);
    }

    function test_tellsOfATransfer() {
        const label = find("transferLabel");
        compare(label.text, "");
        compare(label.textFormat, Text.PlainText);
        // The longest that it can say.
        verify(label.width > 150);
        compare(find("footer").transfers, app.transfers());
    }

    function test_endlessStatusIsLaidOutInPartAndReadWholeInTheToolTip() {
        const status = find("statusLine");
        const toolTip = find("statusToolTip", window);
        app.setStatus("Saved.", 1);
        render();
        mouseMove(status, 10, 5);
        verify(!toolTip.visible);
        app.setStatus("word ".repeat(200000), 0);
        render();
        compare(status.text.length, 2000);
        verify(status.truncated);
        tryVerify(() => toolTip.visible);
        verify(toolTip.fullText.startsWith("word word"));
        mouseMove(find("header"), 5, 5);
        tryVerify(() => !toolTip.visible);
    }
}
