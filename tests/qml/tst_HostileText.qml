import QtQuick
import QtTest
import KvtEditor

// Whatever comes from a file, its name or the service is shown letter by letter, and nothing is fetched for it.
ViewTest {
    id: root

    name: "HostileText"

    function texts(): var {
        return {
            "picture": "<img src='" + fixture.address("picture.png") + "'>",
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

    // A field shows no more than 32767 characters.
    function compareShown(shown: string, value: string): void {
        verify(value !== "");
        verify(shown === value.slice(0, 32767), shown.length + " of " + value.length);
    }

    // A line of input shows letters only; it has no format that could change that.
    function compareField(field: var, value: string): void {
        verify(field instanceof TextInput);
        compareShown(field.text, value);
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
        fixture.startConversion();
        verify(shownTexts().length > 20);
        for (const item of shownTexts())
            compare(item.textFormat, Text.PlainText, item.text);
        fixture.applyInfo({ modules: [{ title: "A", mainOs: "1" }, { title: "B", mainOs: "2" }] });
        app.showHex = true;
        for (const item of shownTexts())
            compare(item.textFormat, Text.PlainText, item.text);
    }

    function test_status_data() { return rows_data(); }

    function test_status(data) {
        const text = texts()[data.tag];
        app.setStatus(text, 0);
        app.showHex = true;
        for (const name of ["statusLine", "hexStatus"]) {
            verify(find(name).text === text.slice(0, 2000) || find(name).text === text, name);
            compare(find(name).textFormat, Text.PlainText, name);
        }
        verifyNothingFetched();
    }

    function test_identifiers_data() { return rows_data(); }

    function test_identifiers(data) {
        const text = texts()[data.tag];
        fixture.applyInfo({ vin: text, created: text, softwareVersion: text });
        compareField(input("vinField"), app.vin);
        compareField(input("createdField"), app.created);
        compareField(input("versionField"), app.editorVersion);
        for (const item of shownTexts())
            compare(item.textFormat, Text.PlainText, item.objectName);
        verifyNothingFetched();
    }

    function test_editedIdentifier_data() { return rows_data(); }

    // The field with the keyboard holds all of it.
    function test_editedIdentifier(data) {
        fixture.applyInfo({ serial: texts()[data.tag] });
        const before = app.serial;
        const field = input("serialField");
        field.forceActiveFocus();
        render();
        verify(field.text === before);
        keyClick(Qt.Key_Home);
        keyClick(Qt.Key_Delete);
        render();
        verify(app.serial === before.slice(1), app.serial.length + " of " + before.length);
        verifyNothingFetched();
    }

    function test_modules_data() { return rows_data(); }

    function test_modules(data) {
        const text = texts()[data.tag];
        const rows = [{ label: text, value: text }];
        const module = { title: text, vin: text, serial: text, mainOs: text, rows: rows };
        fixture.applyInfo({ modules: [module, module] });
        render();
        const lines = find("lines", find("moduleList"));
        const held = app.modules[1];
        // The second module's five lines, in a list that scrolls.
        lines.positionViewAtIndex(9, ListView.End);
        const shown = [5, 6, 9].map(line => lines.itemAtIndex(line));
        compare(find("moduleTitle", shown[0]).text, held.title.slice(0, 200));
        compareField(find("field", shown[1]), held.vin);
        compare(find("caption", shown[2]).text, held.rows[0].label.slice(0, 200).toUpperCase());
        compareField(find("field", shown[2]), held.rows[0].value);
        for (const item of [find("moduleTitle", shown[0]), find("caption", shown[2])])
            compare(item.textFormat, Text.PlainText, item.objectName);
        verify(find("moduleTitle", shown[0]).width <= find("identifiersPanel").width);
        verifyNothingFetched();
    }

    function test_fileName_data() {
        return [{ tag: "tag", file: "<b>x.kvt" }, { tag: "ampersand", file: "R&D.kvt" },
            { tag: "picture", file: "<img src='x'>.kvt" }, { tag: "override", file: "a\u202Eb.kvt" },
            { tag: "newline", file: "a\nb.kvt" }];
    }

    function test_fileName(data) {
        fixture.openFile(data.file, 32);
        compare(app.fileName, data.file);
        compareField(input("fileNameField"), data.file);
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
        compare(findChild(card, "caption").textFormat, Text.PlainText);
        verifyNothingFetched();
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
