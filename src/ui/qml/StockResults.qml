pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import KvtEditor

// The stock files that were found, one of which may be selected. The selection outlives the rows: a new
// search does not touch it.
VOXCard {
    id: root

    property int selected: -1
    readonly property alias count: files.count
    readonly property AppState appState: app // qmllint disable unqualified

    function download(): void {
        if (selected < 0)
            appState.setStatus("Select a stock file first.", 0);
        else
            appState.stockDownload(selected, true);
    }

    title: "Identifiers"
    onSelectedChanged: files.showSelection()

    ListHeading {
        id: columnHeading
        objectName: "stockHeading"
        rowWidth: files.rowWidth
        color: VOXTheme.orange
        pixelSize: 12
        columns: [
            ListColumn { key: "filename"; cell: "file"; title: "Filename" },
            ListColumn { key: "make"; title: "Make"; width: 90 },
            ListColumn { key: "module"; title: "Module"; width: 90 }
        ]
    }

    VOXList {
        id: files
        objectName: "stockList"
        name: "Stock files"
        model: RowModel {
            rows: root.appState.stockRows
            resetting: true
            // Announced when the list itself has seen to the reset.
            onRowsChanged: {
                files.showSelection();
                files.forceLayout();
                files.positionViewAtBeginning();
            }
        }
        Layout.fillWidth: true
        Layout.fillHeight: true

        // The keyboard goes on from the selected row, where there is one.
        function showSelection(): void {
            currentIndex = root.selected < count ? root.selected : -1;
        }

        // After the list's own handler: what the keys highlight is selected. The index by itself tells
        // nothing, for every new model sets it to 0.
        Keys.onPressed: {
            if (currentIndex >= 0)
                root.selected = currentIndex;
        }
        onChosen: root.download()

        delegate: StockRow {
            heading: columnHeading
            selected: index === root.selected
            onClicked: {
                files.forceActiveFocus(Qt.MouseFocusReason);
                root.selected = index;
            }
        }

        VOXLabel {
            objectName: "stockEmptyLine"
            parent: files
            x: columnHeading.margin
            y: 10
            visible: files.count === 0
            text: "No results."
        }
    }

    VOXButton {
        objectName: "stockDownloadButton"
        text: "DOWNLOAD & OPEN"
        orange: true
        onClicked: root.download()
    }
}
