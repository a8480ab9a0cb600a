import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import KvtEditor

// The status line of the whole window.
Rectangle {
    id: root

    readonly property AppState appState: app // qmllint disable unqualified

    Layout.fillWidth: true
    Layout.preferredHeight: 36
    implicitHeight: 36
    color: VOXTheme.bar

    RowLayout {
        anchors { fill: parent; leftMargin: 16; rightMargin: 16 }
        spacing: 16

        Item {
            Layout.fillWidth: true
            Layout.fillHeight: true

            StatusLine {
                objectName: "statusLine"
                anchors { left: parent.left; right: parent.right; verticalCenter: parent.verticalCenter }
                text: root.appState.status
                ok: root.appState.statusOK
                maximumLineCount: 2
                elide: Text.ElideRight
            }
        }

        BusyMark {
            objectName: "busyIndicator"
            running: root.appState.busy
        }

        Label {
            text: "Voxworks Automotive - 2026"
            textFormat: Text.PlainText
            color: VOXTheme.muted
            font.pixelSize: 11
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
    }
}
