pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import KvtEditor

// Fault codes out of a pasted message.
VOXCard {
    id: root

    readonly property AppState appState: app // qmllint disable unqualified

    function decode(): void {
        appState.decodeJ1939(message.text);
    }

    title: "Identifiers"

    RowLayout {
        spacing: 10

        VOXField {
            id: message
            objectName: "dtcField"
            unlimitedLength: true
            placeholderText: "Paste a DM1 message"
            onAccepted: root.decode()
            Layout.fillWidth: true
        }

        VOXButton {
            objectName: "dtcDecodeButton"
            text: "Decode"
            Layout.fillWidth: false
            Layout.preferredWidth: 100
            Layout.preferredHeight: message.height
            onClicked: root.decode()
        }
    }

    VOXList {
        id: faults
        objectName: "dtcList"
        name: "Decoded faults"
        model: root.appState.j1939Rows
        Layout.fillWidth: true
        Layout.fillHeight: true

        delegate: VOXListRow {
            id: row

            required property var modelData
            required property int index

            objectName: "dtcRow" + index
            height: line.implicitHeight + 16
            fullText: modelData.text

            VOXLabel {
                id: line
                objectName: "line"
                x: 10
                y: 8
                width: parent.width - 20
                text: row.fullText
                wrapMode: Text.Wrap
                muted: false
                font { family: VOXTheme.fixedFamily; pixelSize: 12 }
                Accessible.ignored: true
            }
        }

        VOXLabel {
            objectName: "dtcEmptyLine"
            parent: faults
            x: 10
            y: 10
            visible: faults.count === 0
            text: "Tool output appears here."
        }
    }
}
