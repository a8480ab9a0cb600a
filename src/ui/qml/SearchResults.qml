pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import KvtEditor

// The hits of the last folder search.
VOXCard {
    id: root

    readonly property AppState appState: app // qmllint disable unqualified

    title: "Identifiers"

    SearchColumns {
        id: widths
        rowWidth: hits.rowWidth
    }

    Row {
        spacing: widths.gap
        Layout.leftMargin: widths.margin

        ListCaption {
            objectName: "headingFile"
            text: "File"
            width: widths.file
        }

        ListCaption {
            objectName: "headingOS"
            text: "OS"
            width: widths.os
        }

        ListCaption {
            objectName: "headingYear"
            text: "Year"
            width: widths.year
        }

        ListCaption {
            objectName: "headingMake"
            text: "Make"
            width: widths.make
        }
    }

    VOXList {
        id: hits
        objectName: "searchList"
        name: "Files found"
        model: root.appState.searchHits
        onChosen: row => root.appState.openSearchHit(row)
        Layout.fillWidth: true
        Layout.fillHeight: true

        delegate: SearchHitRow {
            columns: widths
            onClicked: {
                hits.forceActiveFocus(Qt.MouseFocusReason);
                hits.currentIndex = index;
                root.appState.openSearchHit(index);
            }
        }

        VOXLabel {
            objectName: "searchEmptyLine"
            parent: hits
            x: widths.margin
            y: 10
            visible: hits.count === 0
            text: root.appState.searchBusy ? "Scanning folder ..." : "No results yet."
        }
    }
}
