import QtQuick
import QtQuick.Templates as T
import KvtEditor

// The background of a button: lighter under the pointer, ringed while it has the keyboard.
Rectangle {
    id: root

    required property T.AbstractButton button
    property int edge: 0

    radius: VOXTheme.radiusControl
    border.width: button.visualFocus ? 2 : edge
    border.color: button.visualFocus ? VOXTheme.focusRing : VOXTheme.orange

    Rectangle {
        anchors.fill: parent
        radius: parent.radius
        color: VOXTheme.accentText
        opacity: 0.06
        visible: root.button.hovered && root.button.enabled
    }
}
