import QtQuick
import QtQuick.Controls.Basic
import KvtEditor

// A context menu that is as dark as the drop-downs. It keeps clear of the window's edges; Esc or a click
// beside it closes it.
Menu {
    id: root

    width: 200
    padding: 4
    margins: 6
    modal: true
    dim: false

    background: Rectangle {
        radius: VOXTheme.radiusControl
        color: VOXTheme.panel
        border.width: 1
        border.color: VOXTheme.border
    }
}
