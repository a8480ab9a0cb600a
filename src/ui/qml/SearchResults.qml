pragma ComponentBehavior: Bound

import QtQml
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
        sortable: true
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
        hasMenus: true
        model: SortedRows {
            id: sorted
            rows: root.appState.searchHits
            key: columnHeading.sortKey
            descending: columnHeading.descending
            onModelReset: hits.startOver()
        }
        onChosen: row => root.appState.openSearchHit(sorted.listIndex(row))
        onMenuKeyPressed: row => {
            if (currentItem)
                rowMenu.openFor(currentItem as ListColumnsRow, columnHeading.margin, currentItem.height);
        }
        Layout.fillWidth: true
        Layout.fillHeight: true

        // Only a tune file opens; anything else shows that a click does nothing.
        delegate: ListColumnsRow {
            id: hit

            required property var row

            objectName: "searchHit" + index
            heading: columnHeading
            record: row
            // Equal names are told apart by their folders.
            tips: [row.path]
            hasMenu: true
            onMenuWanted: (x, y) => rowMenu.openFor(hit, x, y)
            clickable: root.appState.isKvtFile(values[0])
            onClicked: {
                hits.forceActiveFocus(Qt.MouseFocusReason);
                hits.currentIndex = index;
                root.appState.openSearchHit(sorted.listIndex(index));
            }
        }

        VOXMenu {
            id: rowMenu
            objectName: "searchMenu"

            property string path

            function openFor(row: ListColumnsRow, x: real, y: real): void {
                path = row.record.path;
                popup(row, x, y);
                currentIndex = 0;
            }

            VOXMenuItem {
                text: "Copy path"
                onTriggered: root.appState.copyText(rowMenu.path, "Path")
            }

            VOXMenuItem {
                text: "Open folder"
                onTriggered: root.appState.showFolder(rowMenu.path)
            }

            VOXMenuLine { }

            Instantiator {
                model: columnHeading.columns
                onObjectAdded: (index, object) => rowMenu.addItem(object)
                onObjectRemoved: (index, object) => rowMenu.removeItem(object)

                VOXMenuItem {
                    required property ListColumn modelData

                    text: "Sort by " + modelData.spoken
                    onTriggered: columnHeading.sortBy(modelData.key)
                }
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
