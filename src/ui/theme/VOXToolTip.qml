import QtQuick
import QtQuick.Controls.Basic
import KvtEditor

// Shows a text that did not fit its place, or a short hint, letter by letter.
ToolTip {
    id: root

    property string fullText

    delay: 500
    padding: 8
    width: Math.min(implicitWidth, 640)

    contentItem: Text {
        objectName: "toolTipText"
        text: root.fullText.slice(0, 2000)
        textFormat: Text.PlainText
        wrapMode: Text.Wrap
        maximumLineCount: 40
        elide: Text.ElideRight
        font.pixelSize: 12
        color: VOXTheme.text
        Accessible.role: Accessible.ToolTip
        Accessible.name: text
    }

    background: Rectangle {
        radius: VOXTheme.radiusControl
        color: VOXTheme.buttonFill
        border.width: 1
        border.color: VOXTheme.border
    }
}
