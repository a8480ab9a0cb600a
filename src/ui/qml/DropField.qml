import QtQuick
import KvtEditor

// A field that says what was chosen, and takes such a thing when it is dropped on it.
Item {
    id: root

    property alias title: field.title
    property alias text: field.text
    property alias folder: drop.folder
    property alias several: drop.several
    readonly property bool locked: field.locked
    readonly property Item input: field.input

    signal taken(var paths)

    implicitWidth: field.implicitWidth
    implicitHeight: field.implicitHeight

    VOXTextField {
        id: field
        anchors.fill: parent
        locked: true
    }

    FileDrop {
        id: drop
        anchors.fill: parent
        frameTop: height - root.input.height
        onTaken: paths => root.taken(paths)
    }
}
