import QtQuick
import QtTest
import KvtEditor

ViewTest {
    name: "Identifiers"

    readonly property var twoModules: [
        { title: "Engine", vin: "VIN1", serial: "S1", mainOs: "111",
          rows: [{ label: "Segment", value: "E1" }] },
        { title: "Transmission", mainOs: "222",
          rows: [{ label: "Segment", value: "T1" }, { label: "Cal", value: "T2" }] }
    ]

    function shownFields(within: var): var {
        const found = [];
        const collect = item => {
            for (let i = 0; i < item.children.length; ++i) {
                const child = item.children[i];
                if (child.locked !== undefined && child.visible)
                    found.push(child.title + "=" + child.text);
                else
                    collect(child);
            }
        };
        collect(within);
        return found;
    }

    function test_field_data() {
        return [
            { tag: "vin", title: "VIN" }, { tag: "serial", title: "Serial Number" },
            { tag: "mainOS", title: "Main OS" }, { tag: "system", title: "System" },
            { tag: "fuel", title: "Fuel System" },
            { tag: "speedometer", title: "Speedometer" }, { tag: "engineDiag", title: "Engine Diag" },
            { tag: "engineOp", title: "Engine Op" }, { tag: "interfaceID", title: "Interface ID" }
        ];
    }

    function test_field(data) {
        const field = find(data.tag + "Field");
        compare(field.title, data.title);
        compare(field.locked, false);
        input(data.tag + "Field").forceActiveFocus();
        type("ab");
        compare(app[data.tag], "ab");
        app[data.tag] = "from elsewhere";
        compare(field.text, "from elsewhere");
        // The binding outlives the typing.
        type("!");
        verify(app[data.tag].includes("!"));
        app[data.tag] = "again";
        compare(field.text, "again");
    }

    function test_typingKeepsTheCursorsPlace() {
        app.vin = "ABCD";
        const field = input("vinField");
        field.forceActiveFocus();
        field.cursorPosition = 2;
        type("xy");
        compare(app.vin, "ABxyCD");
        compare(field.cursorPosition, 4);
    }

    function test_answerAboutAnotherFieldLeavesTheTypingAlone() {
        const field = input("vinField");
        field.forceActiveFocus();
        type("ABCD");
        field.cursorPosition = 1;
        bed.applyInfo({ serial: "777" });
        compare(find("serialField").text, "777");
        compare(field.text, "ABCD");
        compare(field.cursorPosition, 1);
    }

    function test_faceFollowsTheNumberOfModules_data() {
        return [
            { tag: "none", modules: [], fields: true },
            { tag: "one", modules: twoModules.slice(0, 1), fields: true },
            { tag: "two", modules: twoModules, fields: false }
        ];
    }

    function test_faceFollowsTheNumberOfModules(data) {
        bed.applyInfo({ modules: data.modules });
        compare(find("identifierFields").visible, data.fields);
        compare(find("moduleList").visible, !data.fields);
    }

    function test_everyModuleShowsItsOwn() {
        bed.applyInfo({ modules: twoModules, interfaceId: "77" });
        const list = find("moduleList");
        compare(find("moduleTitle", find("module0")).text, "Engine");
        compare(find("moduleTitle", find("module0")).color, VOXTheme.orange);
        compare(find("moduleTitle", find("module1")).text, "Transmission");
        compare(shownFields(find("module0")), ["VIN=VIN1", "Serial Number=S1", "Main OS=111", "Segment=E1"]);
        compare(shownFields(find("module1")), ["Main OS=222", "Segment=T1", "Cal=T2"]);
        compare(shownFields(list).pop(), "Interface ID=77");
        verify(find("moduleRow0", find("module1")).locked);
    }

    function test_interfaceIdOfSeveralModulesOnlyWhenThereIsOne() {
        bed.applyInfo({ modules: twoModules });
        compare(find("sharedInterfaceIDField").visible, false);
        app.interfaceID = "77";
        compare(find("sharedInterfaceIDField").visible, true);
    }

    function test_moduleListKeepsItsPlace() {
        window.height = 720;
        bed.applyInfo({ modules: twoModules.concat(twoModules) });
        const list = find("moduleList");
        const view = find("scrollView", list);
        tryVerify(() => view.contentHeight > view.height + 50);
        list.contentY = 50;
        app.fuel = "Diesel";
        compare(list.contentY, 50);
        const block = find("module0");
        bed.applyInfo({ fuel: "Petrol" });
        compare(find("module0"), block);
    }

    function test_anotherFileBringsTheFieldsBack() {
        bed.applyInfo({ modules: twoModules });
        bed.openFile("b.kvt", 16);
        compare(find("identifierFields").visible, true);
        compare(find("vinField").text, "");
    }
}
