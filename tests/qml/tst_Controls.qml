import QtQuick
import QtQuick.Layouts
import QtTest
import KvtEditor

Item {
    id: root

    property string boundText: "first"

    width: 600
    height: 400

    TestCase {
        name: "Controls"
        when: windowShown

        function init() {
            failOnWarning(/.?/);
            root.boundText = "first";
        }

        function make(component: Component): var {
            const item = createTemporaryObject(component, root);
            verify(item);
            return item;
        }

        function test_statusLineWithoutTextTakesNoSpace() {
            const column = make(statusColumn);
            const line = findChild(column, "line");
            compare(line.visible, false);
            const empty = column.implicitHeight;
            line.text = "Saved.";
            tryVerify(() => column.implicitHeight > empty);
            compare(line.visible, true);
            line.text = "";
            tryCompare(column, "implicitHeight", empty);
        }

        function test_statusLineColour_data() {
            return [
                { tag: "success", ok: 1, shown: VOXTheme.success },
                { tag: "failure", ok: 0, shown: VOXTheme.error },
                { tag: "neutral", ok: -1, shown: VOXTheme.muted },
                { tag: "unknown-above", ok: 2, shown: VOXTheme.muted },
                { tag: "unknown-below", ok: -2, shown: VOXTheme.muted }
            ];
        }

        function test_statusLineColour(data) {
            const line = findChild(make(statusColumn), "line");
            line.text = "Text.";
            line.ok = data.ok;
            compare(line.color, data.shown);
            compare(line.font.pixelSize, 12);
        }

        function test_buttonFill_data() {
            return [
                { tag: "ordinary", orange: false, enabled: true, opacity: 1 },
                { tag: "orange", orange: true, enabled: true, opacity: 1 },
                { tag: "ordinary-disabled", orange: false, enabled: false, opacity: 0.45 },
                { tag: "orange-disabled", orange: true, enabled: false, opacity: 0.45 }
            ];
        }

        function test_buttonFill(data) {
            const button = make(buttonComponent);
            button.orange = data.orange;
            button.enabled = data.enabled;
            compare(button.background.color, data.orange ? VOXTheme.orange : VOXTheme.buttonFill);
            compare(button.background.opacity, data.opacity);
            compare(button.background.radius, 8);
            compare(button.contentItem.color, data.orange ? Qt.color("white") : VOXTheme.text);
            compare(button.font.pixelSize, 13);
            compare(button.font.weight, Font.DemiBold);
        }

        function test_buttonWhilePressed() {
            const button = make(buttonComponent);
            mousePress(button);
            compare(button.background.opacity, 0.85);
            mouseRelease(button);
            compare(button.background.opacity, 1);
        }

        function test_buttonWithTheKeyboardHasARing() {
            const button = make(buttonComponent);
            compare(button.background.border.width, 0);
            button.forceActiveFocus(Qt.TabFocusReason);
            compare(button.background.border.width, 2);
        }

        function test_cardCaption_data() {
            return [
                { tag: "titled", title: "Workspace", visible: true, shown: "WORKSPACE" },
                { tag: "untitled", title: "", visible: false, shown: "" }
            ];
        }

        function test_cardCaption(data) {
            const card = make(cardComponent);
            card.title = data.title;
            const caption = findChild(card, "caption");
            compare(caption.visible, data.visible);
            compare(caption.text, data.shown);
            const body = findChild(card, "body");
            compare(body.x, 16);
            compare(body.y, data.visible ? 16 + caption.height + 12 : 16);
            compare(body.spacing, 10);
            compare(card.implicitHeight, (data.visible ? caption.height + 12 : 0) + 50 + 32);
        }

        function test_fieldTellsOfTypingOnly() {
            const field = make(fieldComponent);
            const spy = createTemporaryObject(spyComponent, root, { target: field, signalName: "edited" });
            compare(field.text, "first");
            root.boundText = "second";
            compare(field.text, "second");
            compare(spy.count, 0);

            const input = findChild(field, "field");
            input.forceActiveFocus();
            input.cursorPosition = input.length;
            keyClick("x");
            compare(spy.count, 1);
            compare(spy.signalArguments[0][0], "secondx");

            // Typing leaves the binding alone.
            root.boundText = "third";
            compare(field.text, "third");
            compare(spy.count, 1);
        }

        function test_lockedFieldTakesNoTyping() {
            const field = make(fieldComponent);
            field.locked = true;
            const input = findChild(field, "field");
            input.forceActiveFocus();
            keyClick("x");
            compare(field.text, "first");
        }

        function test_lockedFieldShowsALock() {
            const field = make(fieldComponent);
            const lock = findChild(field, "lock");
            verify(!lock.visible);
            field.locked = true;
            verify(lock.visible);
            verify(lock.x > findChild(field, "caption").contentWidth);
            field.title = "";
            verify(!lock.visible);
        }

        function test_secretFieldHidesItsText() {
            const field = make(fieldComponent);
            field.secret = true;
            const input = findChild(field, "field");
            compare(input.echoMode, TextInput.Password);
            verify(input.displayText !== "first");
        }

        function test_fieldLooks() {
            const field = make(fieldComponent);
            const input = findChild(field, "field");
            const caption = findChild(field, "caption");
            compare(caption.text, "NAME");
            compare(caption.color, VOXTheme.muted);
            compare(caption.font.pixelSize, 11);
            compare(field.spacing, 4);
            compare(input.color, VOXTheme.text);
            compare(input.selectionColor, VOXTheme.orange);
            compare(input.selectedTextColor, Qt.color("white"));
            for (const side of ["leftPadding", "rightPadding", "topPadding", "bottomPadding"])
                compare(input[side], 10);
            compare(input.background.color, VOXTheme.input);
            compare(input.background.border.color, VOXTheme.border);
            compare(input.background.border.width, 1);
            input.forceActiveFocus();
            compare(input.background.border.color, VOXTheme.orangeBright);
        }

        function test_longTextFromElsewhereShowsItsBeginning() {
            const field = make(fieldComponent);
            root.boundText = "a long text ".repeat(40);
            compare(findChild(field, "field").cursorPosition, 0);
        }

        function test_onlyTheBoxToggles() {
            const check = make(checkComponent);
            const spy = createTemporaryObject(spyComponent, root, { target: check, signalName: "toggled" });
            mouseClick(findChild(check, "label"));
            compare(check.checked, false);
            mouseClick(findChild(check, "box"));
            compare(check.checked, true);
            compare(spy.count, 1);
            compare(spy.signalArguments[0][0], true);
            check.checked = false;
            compare(spy.count, 1);
        }

        function test_checkBoxLooks() {
            const check = make(checkComponent);
            const box = findChild(check, "box");
            compare(box.width, 22);
            compare(box.height, 22);
            compare(box.indicator.width, 20);
            compare(box.indicator.y, 1);
            compare(box.indicator.border.color, VOXTheme.border);
            check.checked = true;
            compare(box.indicator.border.color, VOXTheme.orange);
            compare(check.text, "Skip the check");
        }

        function test_scrolledColumnShowsTheFieldWithTheKeyboard() {
            const scroll = make(scrollComponent);
            compare(scroll.contentY, 0);
            const last = findChild(scroll, "last");
            last.forceActiveFocus();
            tryVerify(() => scroll.contentY > 0);
            verify(last.mapToItem(scroll, 0, last.height).y <= scroll.height);
            findChild(scroll, "first").forceActiveFocus();
            compare(scroll.contentY, 0);
        }
    }

    Component {
        id: statusColumn

        ColumnLayout {
            StatusLine { objectName: "line" }
            Item { implicitHeight: 10 }
        }
    }

    Component {
        id: buttonComponent

        VOXButton { text: "Go"; width: 100; height: 40 }
    }

    Component {
        id: cardComponent

        VOXCard {
            width: 300
            Item { implicitHeight: 50 }
        }
    }

    Component {
        id: fieldComponent

        VOXTextField { title: "Name"; text: root.boundText; width: 200 }
    }

    Component {
        id: checkComponent

        VOXCheckBox { text: "Skip the check"; width: 300 }
    }

    Component {
        id: scrollComponent

        VOXScroll {
            width: 200
            height: 120
            VOXField { objectName: "first" }
            Item { implicitHeight: 300 }
            VOXField { objectName: "last" }
        }
    }

    Component {
        id: spyComponent

        SignalSpy {}
    }
}
