import QtQuick
import QtQuick.Layouts
import KvtEditor

// Names a file that was picked, shortened in the middle where it is long and whole on hover.
VOXLabel {
    id: root

    elide: Text.ElideMiddle
    maximumLineCount: 1
    Layout.fillWidth: true
    Layout.preferredWidth: 1

    HoverHandler {
        id: pointer
    }

    VOXToolTip {
        objectName: "fullText"
        visible: pointer.hovered && root.truncated
        fullText: root.text
    }
}
