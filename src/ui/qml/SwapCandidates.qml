pragma ComponentBehavior: Bound

import QtQuick
import KvtEditor

// The swaps that the service offers, each to be ticked or not. The keyboard stays with the list: the arrows
// move a highlighted row, the space bar ticks it.
VOXList {
    id: root

    readonly property AppState appState: app // qmllint disable unqualified
    property string emptyText

    // A row that is half in sight stays under the pointer.
    function pointAt(row: int): void {
        const place = contentY;
        forceActiveFocus(Qt.MouseFocusReason);
        currentIndex = row;
        contentY = place;
    }

    function refresh(): void {
        candidates.rows = appState.swapCandidates;
    }

    name: "Swap candidates"
    model: candidates
    Component.onCompleted: refresh()

    Keys.onSpacePressed: event => {
        if (currentItem && !event.isAutoRepeat)
            (currentItem as SwapCandidateRow).toggle();
    }

    delegate: SwapCandidateRow {
        onPointed: root.pointAt(index)
        onToggled: selected => root.appState.setCandidateSelected(index, selected)
    }

    RowModel {
        id: candidates
        onModelReset: {
            root.currentIndex = -1;
            root.positionViewAtBeginning();
        }
    }

    // Ticking all of them announces each one: the list is looked at once, when the last was told.
    Connections {
        target: root.appState
        function onSegmentsChanged(): void {
            lastTold.restart();
        }
    }

    Timer {
        id: lastTold
        interval: 0
        onTriggered: root.refresh()
    }

    VOXLabel {
        objectName: "swapEmptyLine"
        parent: root
        x: 10
        y: 10
        width: root.rowWidth - 10
        visible: root.count === 0
        text: root.emptyText
        wrapMode: Text.Wrap
    }
}
