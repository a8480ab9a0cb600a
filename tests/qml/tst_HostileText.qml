import QtQuick
import QtTest
import KvtEditor

// Whatever comes from a file, its name or the service is shown letter by letter, and nothing is fetched for it.
ViewTest {
    id: root

    name: "HostileText"

    function texts(): var {
        return {
            "picture": "<img src='" + bed.address("picture.png") + "'>",
            "tag": "<b>bold</b>",
            "ampersand": "R&D",
            "override": "a\u202Eb",
            "nul": "a\u0000b",
            "long": "x".repeat(1000000)
        };
    }

    function rows_data(): var {
        return ["picture", "tag", "ampersand", "override", "nul", "long"].map(tag => ({ tag: tag }));
    }

    // A field takes no more than 32767 characters.
    function compareShown(shown: string, value: string): void {
        verify(value !== "");
        verify(shown === value.slice(0, 32767), shown.length + " of " + value.length);
    }

    // Every item in sight that shows a text.
    function shownTexts(): var {
        const found = [];
        const collect = item => {
            if (item.visible === false)
                return;
            // A placeholder is a text of our own.
            if (item.text && item.textFormat !== undefined && item.text !== item.parent.placeholderText)
                found.push(item);
            for (let i = 0; i < item.children.length; ++i)
                collect(item.children[i]);
        };
        collect(window.contentItem);
        return found;
    }

    function test_everyTextInSightIsPlain() {
        app.setStatus("Text.", 0);
        bed.startConversion();
        verify(shownTexts().length > 20);
        for (const item of shownTexts())
            compare(item.textFormat, Text.PlainText, item.text);
        bed.applyInfo({ modules: [{ title: "A", mainOs: "1" }, { title: "B", mainOs: "2" }] });
        app.showHex = true;
        for (const item of shownTexts())
            compare(item.textFormat, Text.PlainText, item.text);
    }

    function test_status_data() { return rows_data(); }

    function test_status(data) {
        const text = texts()[data.tag];
        const connections = bed.connectionCount();
        app.setStatus(text, 0);
        compare(find("statusLine").text, text);
        app.showHex = true;
        compare(find("hexStatus").text, text);
        render();
        compare(bed.connectionCount(), connections);
    }

    function test_identifiers_data() { return rows_data(); }

    function test_identifiers(data) {
        const text = texts()[data.tag];
        const connections = bed.connectionCount();
        bed.applyInfo({ vin: text, created: text, softwareVersion: text });
        compareShown(find("vinField").text, app.vin);
        compareShown(find("createdField").text, app.created);
        compareShown(find("versionField").text, app.editorVersion);
        render();
        compare(bed.connectionCount(), connections);
    }

    function test_modules_data() { return rows_data(); }

    function test_modules(data) {
        const text = texts()[data.tag];
        const connections = bed.connectionCount();
        const rows = [{ label: text, value: text }];
        const module = { title: text, vin: text, serial: text, mainOs: text, rows: rows };
        bed.applyInfo({ modules: [module, module] });
        render();
        const lines = find("lines", find("moduleList"));
        const held = app.modules[1];
        // The second module's five lines, in a list that scrolls.
        lines.positionViewAtIndex(9, ListView.End);
        const shown = [5, 6, 9].map(line => lines.itemAtIndex(line));
        compare(find("moduleTitle", shown[0]).text, held.title.slice(0, 200));
        compareShown(find("field", shown[1]).text, held.vin);
        compare(find("caption", shown[2]).text, held.rows[0].label.slice(0, 200).toUpperCase());
        compareShown(find("field", shown[2]).text, held.rows[0].value);
        render();
        verify(find("moduleTitle", shown[0]).width <= find("identifiersPanel").width);
        compare(bed.connectionCount(), connections);
    }

    function test_fileName_data() {
        return [{ tag: "tag", file: "<b>x.kvt" }, { tag: "ampersand", file: "R&D.kvt" },
            { tag: "picture", file: "<img src='x'>.kvt" }, { tag: "override", file: "a\u202Eb.kvt" },
            { tag: "newline", file: "a\nb.kvt" }];
    }

    function test_fileName(data) {
        bed.openFile(data.file, 32);
        compare(app.fileName, data.file);
        compare(find("fileNameField").text, data.file);
        render();
    }

    function test_sharedControls() {
        const button = createTemporaryObject(buttonComponent, window.contentItem, { text: texts().picture });
        compare(button.contentItem.text, texts().picture);
        compare(button.contentItem.textFormat, Text.PlainText);
        const check = createTemporaryObject(checkComponent, window.contentItem, { text: texts().picture });
        compare(findChild(check, "label").textFormat, Text.PlainText);
        const card = createTemporaryObject(cardComponent, window.contentItem, { title: "R&D" });
        compare(findChild(card, "caption").text, "R&D");
        render();
        compare(bed.connectionCount(), bed.requestCount());
    }

    Component {
        id: buttonComponent

        VOXButton {}
    }

    Component {
        id: checkComponent

        VOXCheckBox {}
    }

    Component {
        id: cardComponent

        VOXCard {}
    }
}
