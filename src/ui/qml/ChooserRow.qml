import QtQuick
import KvtEditor

// A folder or a file in our own dialog.
ListColumnsRow {
    id: root

    required property string name
    required property double size
    required property date modified
    required property bool isFolder
    property bool marked: false

    signal pressed(int modifiers)
    signal entered()

    objectName: "chooserRow"
    record: ({
        name: name,
        size: isFolder ? "" : Qt.locale().formattedDataSize(size),
        modified: Qt.formatDateTime(modified, "yyyy-MM-dd HH:mm")
    })
    clickable: true
    indent: 24
    color: marked ? VOXTheme.accent(0.22) : hovered ? VOXTheme.accent(0.12) : "transparent"
    border.width: ListView.isCurrentItem && list.activeFocus ? 1 : 0
    border.color: VOXTheme.orangeBright

    Accessible.name: (isFolder ? "Folder " : "") + values.filter(value => value !== "").join(", ")
    Accessible.selected: marked
    Accessible.onPressAction: pressed(Qt.NoModifier)

    // The icon of a folder.
    Item {
        visible: root.isFolder
        x: root.heading.margin
        anchors.verticalCenter: parent.verticalCenter
        width: 16
        height: 13

        Rectangle {
            width: 8
            height: 5
            radius: 2
            color: VOXTheme.orangeDim
        }

        Rectangle {
            y: 3
            width: 16
            height: 10
            radius: 2
            color: VOXTheme.orangeDim
        }
    }

    MouseArea {
        anchors.fill: parent
        onClicked: mouse => root.pressed(mouse.modifiers)
        onDoubleClicked: root.entered()
    }
}
