import QtQuick
import QtQuick.Controls.Basic
import KvtEditor

// An entry of a VOXMenu.
MenuItem {
    id: root

    implicitHeight: 32
    leftPadding: 10
    rightPadding: 10
    hoverEnabled: true
    font.pixelSize: 13

    Accessible.role: Accessible.MenuItem
    Accessible.name: text

    contentItem: Text {
        text: root.text
        textFormat: Text.PlainText
        font: root.font
        color: !root.enabled ? VOXTheme.disabledText : root.highlighted ? VOXTheme.accentText : VOXTheme.text
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
        Accessible.ignored: true
    }

    background: Rectangle {
        radius: 6
        color: root.highlighted && root.enabled ? VOXTheme.selection : "transparent"
    }
}
