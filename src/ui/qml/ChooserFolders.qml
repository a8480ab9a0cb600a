pragma ComponentBehavior: Bound

import QtQuick
import KvtEditor

// The folder that is shown and all above it, as buttons.
Flickable {
    id: root

    // From the root.
    required property string path

    signal wanted(string folder)

    function showEnd(): void {
        contentX = Math.max(0, contentWidth - width);
    }

    implicitHeight: 32
    contentWidth: row.width
    clip: true
    boundsBehavior: Flickable.StopAtBounds
    onContentWidthChanged: showEnd()
    onWidthChanged: showEnd()

    Row {
        id: row
        spacing: 4

        Repeater {
            model: root.path.split("/").filter((part, index) => index === 0 || part !== "")

            VOXButton {
                required property string modelData
                required property int index

                objectName: "chooserFolder" + index
                text: index === 0 ? "/" : modelData
                width: Math.min(implicitContentWidth + 24, 240)
                height: root.height
                onClicked: root.wanted("/" + root.path.split("/").slice(1, index + 1).join("/"))
            }
        }
    }
}
