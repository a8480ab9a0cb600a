import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Templates as T
import KvtEditor

// A dialog of our own, in the middle of the window.
Popup {
    parent: T.Overlay.overlay
    anchors.centerIn: parent
    padding: 20
    modal: true
    focus: true
    closePolicy: Popup.CloseOnEscape

    background: Rectangle {
        radius: VOXTheme.radiusCard
        color: VOXTheme.panel
        border.width: 1
        border.color: VOXTheme.border
    }
}
