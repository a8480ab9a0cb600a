pragma ComponentBehavior: Bound

import QtQml
import QtQuick.Templates as T
import KvtEditor

// Tells the key that does the same as a button, once the pointer or the keyboard has rested on it. A button
// without such a key costs no tool tip.
Instantiator {
    id: root

    required property T.AbstractButton button
    required property string text
    // Beside the button, for buttons that stand close under each other.
    property bool beside: false
    // What is hidden or disabled may still count as hovered or focused.
    readonly property bool wanted: button.visible && button.enabled && (button.hovered || button.visualFocus)

    model: text === "" ? 0 : 1

    VOXToolTip {
        objectName: "hint"
        parent: root.button
        fullText: root.text
        visible: root.wanted && !root.button.down
        x: root.beside ? root.button.width + 6 : (root.button.width - width) / 2
        y: root.beside ? (root.button.height - height) / 2 : root.button.height + 4
    }
}
