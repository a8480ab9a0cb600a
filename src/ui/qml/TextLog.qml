pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls.Basic
import KvtEditor

// A framed text of any length to read: only the lines in sight are laid out. Arrow and page keys scroll it,
// and the usual keys to copy ask for the whole text.
Rectangle {
    id: root

    property alias text: content.text
    property string name

    signal copyWanted()

    // Whether the keys meant the log.
    function handle(event: KeyEvent): bool {
        if (event.matches(StandardKey.Copy)) { // qmllint disable unqualified
            copyWanted();
            return true;
        }
        const page = Math.max(40, lines.height - 40);
        const steps = {
            [Qt.Key_Up]: -40,
            [Qt.Key_Down]: 40,
            [Qt.Key_PageUp]: -page,
            [Qt.Key_PageDown]: page
        };
        if (event.key in steps)
            scrollBy(steps[event.key]);
        else if (event.key === Qt.Key_Home)
            lines.positionViewAtBeginning();
        else if (event.key === Qt.Key_End)
            lines.positionViewAtEnd();
        else
            return false;
        return true;
    }

    function scrollBy(distance: real): void {
        lines.contentY += distance;
        lines.returnToBounds();
    }

    color: VOXTheme.input
    radius: VOXTheme.radiusControl
    border.width: activeFocus ? 2 : 1
    border.color: activeFocus ? VOXTheme.orangeBright : VOXTheme.border
    activeFocusOnTab: true

    Accessible.role: Accessible.List
    Accessible.name: name
    Accessible.focusable: true

    Keys.onPressed: event => event.accepted = handle(event)

    ListView {
        id: lines
        objectName: "lines"
        anchors { fill: parent; margins: 10 }
        clip: true
        reuseItems: true
        cacheBuffer: 0
        boundsBehavior: Flickable.StopAtBounds
        highlightFollowsCurrentItem: false
        keyNavigationEnabled: false

        model: TextLines {
            id: content
            onTextChanged: lines.positionViewAtBeginning()
        }

        delegate: Text {
            required property string line

            width: ListView.view.width - 8
            text: line
            textFormat: Text.PlainText
            wrapMode: Text.Wrap
            color: VOXTheme.text
            font { family: VOXTheme.fixedFamily; pixelSize: 12 }
            Accessible.role: Accessible.ListItem
            Accessible.name: line
        }

        // Out of the text's way, in the frame's margin.
        ScrollBar.vertical: VOXScrollBar {
            parent: root
            anchors { top: parent.top; bottom: parent.bottom; right: parent.right; margins: 4 }
        }
    }

    MouseArea {
        anchors.fill: lines
        cursorShape: Qt.ArrowCursor
        onPressed: mouse => {
            root.forceActiveFocus(Qt.MouseFocusReason);
            mouse.accepted = false;
        }
    }
}
