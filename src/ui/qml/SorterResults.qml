pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import KvtEditor

// The files that were chosen for the sorter, and where they will go.
VOXCard {
    id: root

    property var files: []
    property string folder

    title: "Results"

    RowLayout {
        spacing: 12
        Layout.leftMargin: 10
        Layout.rightMargin: 24

        ListCaption {
            text: "File"
            Layout.fillWidth: true
        }

        ListCaption {
            text: "OS"
        }
    }

    VOXLabel {
        objectName: "sorterSummary"
        text: root.files.length + " file(s) selected" + (root.folder !== "" ? " → " + root.folder : "")
        maximumLineCount: 1
        elide: Text.ElideMiddle
        muted: false
        Layout.leftMargin: 10
        Layout.fillWidth: true
    }

    VOXList {
        objectName: "sorterList"
        name: "Chosen files"
        model: root.files
        Layout.fillWidth: true
        Layout.fillHeight: true

        delegate: VOXListRow {
            id: row

            required property string modelData
            required property int index

            objectName: "sorterFile" + index
            height: 28
            fullText: modelData
            shortened: path.truncated

            Text {
                id: path
                objectName: "path"
                anchors { fill: parent; leftMargin: 10; rightMargin: 10 }
                text: row.modelData
                textFormat: Text.PlainText
                maximumLineCount: 1
                elide: Text.ElideMiddle
                color: VOXTheme.text
                font.pixelSize: 12
                verticalAlignment: Text.AlignVCenter
                Accessible.ignored: true
            }
        }
    }
}
