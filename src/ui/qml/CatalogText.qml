import QtQuick
import QtQuick.Controls.Basic
import KvtEditor

// The store's answer as it came, for the time that there is nothing of it to list. Arrow and page keys that
// are forwarded here scroll it.
Flickable {
    id: root

    property string text
    readonly property real farthest: Math.max(0, contentHeight - height)

    clip: true
    contentHeight: line.y + line.implicitHeight + 10
    interactive: farthest > 0
    boundsBehavior: Flickable.StopAtBounds

    onTextChanged: contentY = 0

    Keys.onPressed: event => {
        const steps = {
            [Qt.Key_Up]: -40,
            [Qt.Key_Down]: 40,
            [Qt.Key_PageUp]: 40 - height,
            [Qt.Key_PageDown]: height - 40,
            [Qt.Key_Home]: -contentHeight,
            [Qt.Key_End]: contentHeight
        };
        event.accepted = interactive && event.key in steps;
        if (event.accepted)
            contentY = Math.max(0, Math.min(contentY + steps[event.key], farthest));
    }

    VOXLabel {
        id: line
        objectName: "catalogLine"
        x: 10
        y: 10
        width: root.width - 28
        text: root.text !== "" ? root.text : "Catalog appears here after login."
        wrapMode: Text.Wrap
        font.family: root.text !== "" ? VOXTheme.fixedFamily : Application.font.family
    }

    ScrollBar.vertical: VOXScrollBar {
        rightPadding: 4
        topPadding: 6
        bottomPadding: 6
    }
}
