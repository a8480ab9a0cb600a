pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import KvtEditor

// An entry of a VOXMenu.
MenuItem {
    id: root

    // The key that does the same.
    property string keyText

    implicitHeight: 32
    leftPadding: 10
    rightPadding: 10
    hoverEnabled: true
    font.pixelSize: 13

    Accessible.role: Accessible.MenuItem
    Accessible.name: text
    Accessible.description: keyText

    contentItem: RowLayout {
        spacing: 12

        ItemText {
            text: root.text
            color: !root.enabled ? VOXTheme.disabledText : root.highlighted ? VOXTheme.accentText : VOXTheme.text
            elide: Text.ElideRight
            Layout.fillWidth: true
        }

        ItemText {
            text: root.keyText
            color: root.highlighted && root.enabled ? VOXTheme.accentText : VOXTheme.muted
        }
    }

    background: Rectangle {
        radius: 6
        color: root.highlighted && root.enabled ? VOXTheme.selection : "transparent"
    }

    component ItemText: Text {
        textFormat: Text.PlainText
        font: root.font
        verticalAlignment: Text.AlignVCenter
        Accessible.ignored: true
    }
}
