pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import KvtEditor

// The hits of the last folder search.
VOXCard {
    id: root

    readonly property AppState appState: app // qmllint disable unqualified

    title: "Identifiers"

    ListHeading {
        id: columnHeading
        objectName: "heading"
        rowWidth: hits.rowWidth
        columns: [
            ListColumn { key: "name"; cell: "file"; title: "File" },
            ListColumn { key: "os"; title: "OS"; width: 84 },
            ListColumn { key: "year"; title: "Year"; width: 44 },
            ListColumn { key: "make"; title: "Make"; width: 64 }
        ]
    }

    VOXList {
        id: hits
        objectName: "searchList"
        name: "Files found"
        model: root.appState.searchHits
        onChosen: row => root.appState.openSearchHit(row)
        Layout.fillWidth: true
        Layout.fillHeight: true

        // Only a tune file opens; anything else shows that a click does nothing.
        delegate: ListColumnsRow {
            required property var modelData

            objectName: "searchHit" + index
            heading: columnHeading
            record: modelData
            // Equal names are told apart by their folders.
            tips: [modelData.path]
            clickable: root.appState.isKvtFile(values[0])
            onClicked: {
                hits.forceActiveFocus(Qt.MouseFocusReason);
                hits.currentIndex = index;
                root.appState.openSearchHit(index);
            }
        }

        VOXLabel {
            objectName: "searchEmptyLine"
            parent: hits
            x: columnHeading.margin
            y: 10
            visible: hits.count === 0
            text: root.appState.searchBusy ? "Scanning folder ..." : "No results yet."
        }
    }
}
