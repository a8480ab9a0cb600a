pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import KvtEditor

// A drop-down whose list is dark too. Views act on `activated`, which tells of the user's choice only.
ComboBox {
    id: root

    // The wheel belongs to the card around it.
    wheelEnabled: false
    hoverEnabled: true
    implicitHeight: 36
    Layout.preferredWidth: 120
    leftPadding: 10
    rightPadding: 32
    font.pixelSize: 13

    Accessible.role: Accessible.ComboBox

    contentItem: Text {
        text: root.displayText
        textFormat: Text.PlainText
        font: root.font
        color: root.enabled ? VOXTheme.text : VOXTheme.disabledText
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
        Accessible.ignored: true
    }

    indicator: Item {
        x: root.width - width - 12
        y: (root.height - height) / 2
        width: 12
        height: 8
        opacity: root.enabled ? 1 : 0.45

        Rectangle {
            x: 0
            y: 3
            width: 8
            height: 2
            radius: 1
            rotation: 45
            color: VOXTheme.muted
        }

        Rectangle {
            x: 4
            y: 3
            width: 8
            height: 2
            radius: 1
            rotation: -45
            color: VOXTheme.muted
        }
    }

    background: Rectangle {
        radius: VOXTheme.radiusControl
        color: VOXTheme.input
        border.width: root.visualFocus ? 2 : 1
        border.color: root.visualFocus ? VOXTheme.focusRing
            : root.down || root.hovered && root.enabled ? VOXTheme.orange : VOXTheme.border
    }

    delegate: ItemDelegate {
        id: entry

        required property int index

        width: ListView.view ? ListView.view.width : 0
        height: 32
        text: root.textAt(index)
        highlighted: root.highlightedIndex === index
        leftPadding: 6
        hoverEnabled: true
        font: root.font

        Accessible.role: Accessible.ListItem
        Accessible.name: text

        contentItem: Text {
            text: entry.text
            textFormat: Text.PlainText
            font: entry.font
            color: entry.highlighted ? VOXTheme.accentText : VOXTheme.text
            verticalAlignment: Text.AlignVCenter
            elide: Text.ElideRight
            Accessible.ignored: true
        }

        background: Rectangle {
            radius: 6
            color: entry.highlighted ? VOXTheme.selection : "transparent"
        }
    }

    popup: Popup {
        y: root.height + 4
        width: root.width
        height: Math.min(contentItem.implicitHeight + topPadding + bottomPadding, 280)
        padding: 4
        // Near the window's lower end it opens upwards.
        margins: 6

        contentItem: ListView {
            clip: true
            implicitHeight: contentHeight
            model: root.delegateModel
            currentIndex: root.highlightedIndex
            highlightMoveDuration: 0
            boundsBehavior: Flickable.StopAtBounds
            ScrollBar.vertical: VOXScrollBar {}
        }

        background: Rectangle {
            radius: VOXTheme.radiusControl
            color: VOXTheme.panel
            border.width: 1
            border.color: VOXTheme.border
        }
    }
}
