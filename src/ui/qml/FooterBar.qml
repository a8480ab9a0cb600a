import QtQuick
import QtQuick.Layouts
import KvtEditor

// The status line of the whole window, and above it a slim bar while something is at work.
Rectangle {
    id: root

    readonly property AppState appState: app // qmllint disable unqualified
    readonly property TransferMeter transfers: appState.transfers()

    Layout.fillWidth: true
    Layout.preferredHeight: 36
    implicitHeight: 36
    color: VOXTheme.bar

    WorkBar {
        objectName: "workBar"
        anchors { left: parent.left; right: parent.right; top: parent.top }
        running: root.appState.busy || root.appState.searchBusy
    }

    RowLayout {
        anchors { fill: parent; leftMargin: 16; rightMargin: 16 }
        spacing: 16

        Item {
            Layout.fillWidth: true
            Layout.fillHeight: true

            AppStatus {
                objectName: "statusLine"
                anchors { left: parent.left; right: parent.right; verticalCenter: parent.verticalCenter }
                maximumLineCount: 2
            }
        }

        // Wide enough for whatever it may say, so that nothing beside it ever moves.
        VOXLabel {
            objectName: "transferLabel"
            text: root.transfers.text
            horizontalAlignment: Text.AlignRight
            elide: Text.ElideLeft
            Layout.preferredWidth: longestText.advanceWidth

            TextMetrics {
                id: longestText
                font.pixelSize: 12
                text: "Receiving 888 bytes of 888.8 MB"
            }
        }

        BusyMark {
            objectName: "busyIndicator"
            running: root.appState.busy
        }

        VOXLabel {
            text: "Voxworks Automotive - 2026"
            font.pixelSize: 11
        }
    }
}
