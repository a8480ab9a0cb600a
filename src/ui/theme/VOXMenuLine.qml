import QtQuick
import QtQuick.Controls.Basic
import KvtEditor

// A line between the groups of a VOXMenu.
MenuSeparator {
    padding: 4

    contentItem: Rectangle {
        implicitHeight: 1
        color: VOXTheme.border
    }
}
