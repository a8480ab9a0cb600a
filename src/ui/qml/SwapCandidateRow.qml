import QtQuick
import KvtEditor

// One possible swap of segments, with the service's name for it, or else the numbers of its two segments.
VOXListRow {
    id: root

    required property var row
    required property int index
    readonly property string given: typeof row.label === "object" ? "" : String(row.label ?? "")
    readonly property string built: "T" + numberOf(row.targetIndex) + " ← D" + numberOf(row.donorIndex)
    // Of a name without end only so much is laid out as could ever be in sight.
    readonly property string shownText: fullText.slice(0, 500)

    // The row was clicked, on its box or beside it.
    signal pointed()
    signal toggled(bool selected)

    function numberOf(value: var): int {
        return Number(value) || 0;
    }

    function toggle(): void {
        check.input.toggle();
        toggled(check.checked);
    }

    objectName: "swapCandidate" + index
    height: 32
    fullText: given !== "" ? given : built
    shortened: check.caption.truncated || shownText !== fullText
    onClicked: pointed()

    Accessible.checkable: true
    Accessible.checked: check.checked

    VOXCheckBox {
        id: check
        objectName: "check"
        anchors { fill: parent; leftMargin: 10; rightMargin: 10 }
        text: root.shownText
        checked: root.row.selected
        // The keyboard stays with the list, whose rows come and go.
        input.focusPolicy: Qt.NoFocus
        caption.wrapMode: Text.NoWrap
        caption.elide: Text.ElideRight
        caption.maximumLineCount: 1
        onToggled: selected => {
            root.pointed();
            root.toggled(selected);
        }
    }
}
