import QtQuick
import QtTest
import KvtEditor

// An answer with a hundred thousand items, for every list that the service fills: all of it is there, and only the
// rows in sight exist.
ViewTest {
    id: root

    name: "HostileLists"

    readonly property int many: 100000

    function listed(make: var): var {
        return Array.from({ length: many }, (_, index) => make(index));
    }

    function lists_data(): var {
        return [
            { tag: "modules", tab: "main", list: "lines", within: "moduleList", count: 2 * many + 1,
              answer: { status: "ok", modules: listed(index => ({ title: "M" + index, mainOs: "O" + index })) },
              call: () => fixture.openFile("opened.kvt", 32) },
            { tag: "candidates", tab: "segments", list: "swapList", count: many,
              answer: { status: "ok", candidates: listed(index => ({ label: "swap " + index })) },
              call: () => app.previewSegments() },
            { tag: "catalogue", tab: "xdf", list: "xdfList", count: many,
              answer: { items: listed(index => ({ id: index, title: "T" + index, os_id: "O", credits: 1 })) },
              call: () => app.xdfCatalog() },
            { tag: "patches", tab: "patcher", list: "patcherList", count: many,
              answer: { patches: listed(index => ({ id: index, variant: "V" + index, description: "D" })) },
              call: () => app.loadPatches("1") },
            { tag: "stock", tab: "stock", list: "stockList", count: many,
              answer: { files: listed(index => ({ id: index, filename: "f" + index + ".kvt", make: "GM" })) },
              call: () => app.stockSearch({}) },
            { tag: "conversation", tab: "feedback", list: "lines", within: "ticketLog", count: many + 4,
              answer: { messages: listed(index => "message " + index) }, call: () => app.loadTicket("1") }
        ];
    }

    // What a list keeps beside its rows, such as its header and its bar, is few.
    function verifyScreenful(list: var): void {
        render();
        const rows = Array.from(list.contentItem.children).length;
        verify(rows > 5 && rows < 150, rows + " rows exist");
    }

    function test_onlyRowsInSightExist_data() { return lists_data(); }

    function test_onlyRowsInSightExist(data) {
        if (data.tag === "candidates") {
            fixture.openFile("base.kvt", 32);
            tryVerify(() => fixture.allArrived());
            fixture.writeFile("donor.kvt");
            app.pickSegmentFile("donor", fixture.tempPath("donor.kvt"));
        }
        app.tab = data.tab;
        render();
        const list = find(data.list, data.within ? find(data.within) : undefined);
        fixture.answerNext(JSON.stringify(data.answer));
        data.call();
        tryVerify(() => list.count === data.count, 60000, list.count + " rows");
        verifyScreenful(list);
        list.positionViewAtEnd();
        verifyScreenful(list);
        verify(list.itemAtIndex(data.count - 1));
        compare(list.itemAtIndex(0), null);
        list.positionViewAtBeginning();
        verifyScreenful(list);
        verify(list.itemAtIndex(0));
    }
}
