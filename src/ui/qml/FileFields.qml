import QtQuick.Layouts
import KvtEditor

// The open file, above what can be done with it. Where height is dear the two short texts share a row.
GridLayout {
    id: root

    readonly property AppState appState: app // qmllint disable unqualified
    property bool dense: false

    columns: 2
    rowSpacing: 10
    columnSpacing: 10
    Layout.fillWidth: true

    ReadOnlyField {
        objectName: "openFileName"
        title: "Filename"
        value: root.appState.fileName
        Layout.columnSpan: 2
        Layout.preferredWidth: 1
    }

    ReadOnlyField {
        objectName: "openFileCreated"
        title: "Created"
        value: root.appState.created
        Layout.columnSpan: root.dense ? 1 : 2
        Layout.preferredWidth: 1
    }

    ReadOnlyField {
        objectName: "openFileVersion"
        title: "Version"
        value: root.appState.editorVersion
        Layout.columnSpan: root.dense ? 1 : 2
        Layout.preferredWidth: 1
    }
}
