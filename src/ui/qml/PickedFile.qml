import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import KvtEditor

// Names a file that was picked, shortened in the middle where it is long and whole on hover.
Label {
    id: root

    textFormat: Text.PlainText
    elide: Text.ElideMiddle
    maximumLineCount: 1
    color: VOXTheme.muted
    font.pixelSize: 12
    Layout.fillWidth: true
    Layout.preferredWidth: 1

    Accessible.role: Accessible.StaticText
    Accessible.name: text

    HoverHandler {
        id: pointer
    }

    VOXToolTip {
        objectName: "fullText"
        visible: pointer.hovered && root.truncated
        fullText: root.text
    }
}
