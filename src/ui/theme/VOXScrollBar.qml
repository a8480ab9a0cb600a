import QtQuick
import QtQuick.Controls.Basic
import KvtEditor

// A thin scroll bar that stays in sight while there is something to scroll.
ScrollBar {
    id: root

    padding: 1
    minimumSize: 0.06
    policy: ScrollBar.AlwaysOn
    visible: size < 1

    Accessible.role: Accessible.ScrollBar
    Accessible.name: "Scroll"

    contentItem: Rectangle {
        implicitWidth: 6
        implicitHeight: 6
        radius: 3
        color: root.pressed || root.hovered ? VOXTheme.scrollHandleActive : VOXTheme.scrollHandle
    }

    background: Rectangle {
        radius: 4
        color: VOXTheme.input
    }
}
