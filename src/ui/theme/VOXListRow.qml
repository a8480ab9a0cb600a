import QtQuick
import KvtEditor

// The background of a VOXList row: draws the highlight and tracks the pointer.
Rectangle {
    id: root

    // The text that the row may have to shorten, and whether it did.
    property string fullText
    property bool shortened: false
    property bool clickable: false
    // Whether the list opens a menu for it.
    property bool hasMenu: false
    readonly property bool hovered: pointer.containsMouse
    // A VOXList, which knows this type and so cannot be known here.
    readonly property var list: ListView.view

    signal clicked()
    // The right button was pressed there.
    signal menuWanted(real x, real y)

    width: list ? list.rowWidth : 0
    radius: 6
    color: ListView.isCurrentItem ? VOXTheme.accent(0.22)
        : hovered && clickable ? VOXTheme.accent(0.12) : "transparent"

    Accessible.role: Accessible.ListItem
    Accessible.name: fullText
    Accessible.selectable: true
    Accessible.selected: ListView.isCurrentItem

    onHoveredChanged: {
        if (hovered)
            list.hoveredRow = root;
        else if (list && list.hoveredRow === root)
            list.hoveredRow = null;
    }

    MouseArea {
        id: pointer
        anchors.fill: parent
        hoverEnabled: true
        cursorShape: root.clickable ? Qt.PointingHandCursor : Qt.ArrowCursor
        acceptedButtons: root.hasMenu ? Qt.LeftButton | Qt.RightButton : Qt.LeftButton
        onClicked: mouse => {
            if (mouse.button === Qt.RightButton)
                root.menuWanted(mouse.x, mouse.y);
            else
                root.clicked();
        }
    }

    Rectangle {
        anchors { left: parent.left; right: parent.right; bottom: parent.bottom }
        height: 1
        color: VOXTheme.border
        opacity: 0.5
    }
}
