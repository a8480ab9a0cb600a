pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import KvtEditor

// What the control modules of a file say about themselves, one block for each, and below them the identifier
// they share. A service may answer with any number of modules, so only the lines in sight exist.
FocusScope {
    id: root

    required property ModuleLines lines
    required property string interfaceID

    Layout.fillWidth: true
    Layout.fillHeight: true

    // The line after those of the modules is the shared identifier.
    function lineAt(line: int): var {
        if (line >= lines.count)
            return { title: "Interface ID", value: interfaceID, apart: true, hidden: interfaceID === "" };
        return lines.line(line);
    }

    ListView {
        id: view

        objectName: "lines"
        anchors.fill: parent
        focus: true
        clip: true
        // A number: only another number of lines makes the list anew, and thereby loses the place in it.
        model: root.lines.count > 0 ? root.lines.count + 1 : 0
        reuseItems: true
        cacheBuffer: 0
        interactive: contentHeight > height
        boundsBehavior: Flickable.StopAtBounds
        // The line with the keyboard is the current one, which stays alive out of sight.
        highlightFollowsCurrentItem: false
        keyNavigationEnabled: false
        activeFocusOnTab: true

        Accessible.role: Accessible.List
        Accessible.name: "Modules"
        Accessible.focusable: true

        delegate: ModuleLine {
            objectName: "line" + index
            width: ListView.view.width
            line: root.lineAt(index)
            // The keyboard comes to the current line, which at first is a heading.
            onActiveFocusChanged: {
                if (activeFocus && heading)
                    view.enterFirst();
                else if (activeFocus)
                    view.enter(index);
            }
        }

        // The first of the lines from there on, in steps forwards or backwards, that takes the keyboard.
        function fieldFrom(line: int, step: int): int {
            let found = line;
            while (found >= 0 && found < count && (root.lineAt(found).heading || root.lineAt(found).hidden))
                found += step;
            return found >= 0 && found < count ? found : -1;
        }

        function enterFirst(): void {
            const top = fieldFrom(Math.max(0, indexAt(0, contentY)), 1);
            if (top >= 0)
                enter(top);
        }

        function enter(line: int): void {
            reveal(line);
            currentIndex = line;
            currentItem.forceActiveFocus(Qt.TabFocusReason);
        }

        // A heading comes along with the field below it.
        function reveal(line: int): void {
            if (line > 0 && root.lineAt(line - 1).heading)
                positionViewAtIndex(line - 1, ListView.Contain);
            positionViewAtIndex(line, ListView.Contain);
        }

        // False where there is no field to go to.
        function step(by: int): bool {
            const direction = Math.sign(by);
            const wanted = Math.max(0, Math.min(currentIndex + by, count - 1));
            let target = fieldFrom(wanted, direction);
            if (target < 0)
                target = fieldFrom(wanted, -direction);
            if (target < 0 || (target - currentIndex) * direction <= 0)
                return false;
            enter(target);
            return true;
        }

        Keys.onPressed: event => {
            const page = Math.max(1, Math.floor(height / 60) - 1);
            const steps = {
                [Qt.Key_Tab]: event.modifiers & Qt.ShiftModifier ? -1 : 1,
                [Qt.Key_Backtab]: -1,
                [Qt.Key_Down]: 1,
                [Qt.Key_Up]: -1,
                [Qt.Key_PageDown]: page,
                [Qt.Key_PageUp]: -page,
                [Qt.Key_End]: count,
                [Qt.Key_Home]: -count
            };
            event.accepted = event.key in steps && step(steps[event.key]);
        }

        ScrollBar.vertical: VOXScrollBar {
            objectName: "scrollBar"
            parent: root
            anchors { left: parent.right; leftMargin: 4; top: parent.top; bottom: parent.bottom }
        }
    }
}
