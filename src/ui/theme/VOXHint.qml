pragma ComponentBehavior: Bound

import QtQml
import QtQuick
import KvtEditor

// Tells the key that does the same as a control, once the pointer or the keyboard has rested on it. The tool tip is
// made when it is first wanted.
Instantiator {
    id: root

    required property Item control
    required property string text
    required property bool wanted
    // Beside the control, for those that stand close under each other.
    property bool beside: false
    // What is hidden or disabled may still count as hovered or focused.
    readonly property bool shown: wanted && text !== "" && control.visible && control.enabled

    model: 0
    onShownChanged: model = 1

    VOXToolTip {
        objectName: "hint"
        parent: root.control
        fullText: root.text
        visible: root.shown
        x: root.beside ? root.control.width + 6 : (root.control.width - width) / 2
        y: root.beside ? (root.control.height - height) / 2 : root.control.height + 4
    }
}
