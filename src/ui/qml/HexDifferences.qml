pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import KvtEditor

// Every place where the compared files differ; one that is chosen is selected in the editor.
Rectangle {
    id: root

    readonly property AppState appState: app // qmllint disable unqualified
    readonly property HexEditing editing: appState.hexEditing()
    readonly property HexCompare compare: editing.compare
    // Counts changes: every text depends on it.
    property int revision: 0
    // The list's rows have places as 32-bit floats, in which more of them would drift apart.
    readonly property int mostListed: 500000
    readonly property bool hasFocus: list.activeFocus

    // An edit leaves the list where it is.
    function refresh(): void {
        const place = list.contentY;
        const row = list.currentIndex;
        const count = compare.busy ? 0 : Math.min(compare.places, mostListed);
        if (list.count !== count) {
            list.model = count;
            list.currentIndex = Math.min(row, count - 1);
            list.contentY = Math.max(list.originY, Math.min(place, list.originY + list.contentHeight - list.height));
        }
        revision++;
    }

    Component.onCompleted: refresh()

    color: VOXTheme.panel
    radius: VOXTheme.radiusControl
    border.width: 1
    border.color: VOXTheme.border
    implicitWidth: 320
    implicitHeight: 200

    Connections {
        target: root.compare
        function onChanged(): void {
            root.refresh();
        }
    }

    ColumnLayout {
        anchors { fill: parent; margins: 12 }
        spacing: 8

        VOXLabel {
            text: "Differences"
            muted: false
            font { pixelSize: 13; bold: true }
            Accessible.role: Accessible.Heading
        }

        VOXLabel {
            objectName: "hexDifferencesHint"
            text: root.compare.text
                + (root.compare.places > root.mostListed ? ". The first " + root.mostListed + " places are listed." : "")
            wrapMode: Text.Wrap
            Layout.fillWidth: true
        }

        VOXList {
            id: list
            objectName: "hexDifferencesList"
            name: "Differences"
            model: 0
            Layout.fillWidth: true
            Layout.fillHeight: true
            onChosen: row => root.editing.showDifference(row)

            delegate: VOXListRow {
                id: row

                required property int index

                objectName: "hexDifference" + index
                height: 24
                clickable: true
                fullText: root.revision >= 0 ? root.compare.placeText(index) : ""
                onClicked: {
                    list.currentIndex = index;
                    root.editing.showDifference(index);
                }

                Text {
                    anchors { fill: parent; leftMargin: 8 }
                    text: row.fullText
                    textFormat: Text.PlainText
                    color: VOXTheme.text
                    font { family: VOXTheme.fixedFamily; pixelSize: 12 }
                    verticalAlignment: Text.AlignVCenter
                    Accessible.ignored: true
                }
            }
        }
    }
}
