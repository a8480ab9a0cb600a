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

    function test_failureHasASignAndAnExplanation() {
        const status = find("statusLine");
        const sign = find("failureSign", status);
        app.setStatus("Saved.", 1);
        verify(!sign.visible);
        compare(status.Accessible.description, "");
        app.setStatus("Could not read file.", 0);
        verify(sign.visible);
        verify(inWindow(sign).left >= inWindow(status).left);
        verify(status.leftPadding > sign.width);
        compare(status.text, "Could not read file.");
        compare(status.Accessible.description,
            "The file is empty. Choose another file. The one that was open stays open.");
        render();
        mouseMove(status, 10, 5);
        tryVerify(() => find("statusToolTip", status).visible);
        compare(find("statusToolTip", status).fullText, status.Accessible.description);
        mouseMove(find("header"), 5, 5);
        app.setStatus("What only the service knows", 0);
        compare(status.Accessible.description, "");
    }

    function test_sameStatusIsSeenAgain() {
        const status = find("statusLine");
        app.setStatus("Saved.", 1);
        tryCompare(status, "opacity", 1);
        app.setStatus("Saved.", 1);
        verify(status.opacity < 1);
        tryCompare(status, "opacity", 1);
    }

    function test_earlierStatusIsDimmedDuringWork() {
        const status = find("statusLine");
        app.setStatus("Saved.", 1);
        tryCompare(status, "opacity", 1);
        fixture.startConversion();
        verify(app.busy);
        tryCompare(status, "opacity", 0.6);
        // What is said meanwhile is not.
        app.setStatus("Halfway.", -1);
        tryCompare(status, "opacity", 1);
    }

    function test_anyRequestDimsWhatWasSaidBefore() {
        const status = find("statusLine");
        app.setStatus("XDF login failed.", 0);
        tryVerify(() => !status.fresh);
        app.loadTicket("1");
        verify(app.transfers().running);
        tryCompare(status, "opacity", 0.6);
    }

    // Opening tells of itself, and asks the service right after that.
    function test_whatIsSaidOnTheWayIsNotDimmed() {
        const status = find("statusLine");
        fixture.openFile("truck.kvt", 100);
        verify(app.transfers().running);
        tryVerify(() => !status.fresh);
        tryCompare(status, "opacity", 1);
        verify(!status.outdated);
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
