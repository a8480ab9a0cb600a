import QtQuick
import QtQuick.Layouts
import KvtEditor

// A framed group of controls under an optional title.
//
// Title and body are placed by geometry and only the body uses a layout: nested layouts recurse when children
// are added or removed.
Rectangle {
    id: root

    property string title
    default property alias content: body.data

    readonly property int margin: 16
    readonly property real bodyTop: caption.visible ? margin + caption.height + 12 : margin

    Layout.fillWidth: true
    implicitWidth: body.implicitWidth + 2 * margin
    implicitHeight: bodyTop - margin + body.implicitHeight + 32
    color: VOXTheme.panel
    radius: VOXTheme.radiusCard
    border.width: 1
    border.color: VOXTheme.border
    clip: true

    Accessible.role: Accessible.Grouping
    Accessible.name: title

    Rectangle {
        objectName: "glow"
        anchors { left: parent.left; right: parent.right; top: parent.top; margins: 1 }
        height: 28
        radius: root.radius - 1
        gradient: Gradient {
            GradientStop { position: 0; color: VOXTheme.accent(0.22) }
            GradientStop { position: 1; color: "transparent" }
        }
    }

    VOXLabel {
        id: caption
        objectName: "caption"
        anchors { left: parent.left; right: parent.right; top: parent.top; margins: root.margin }
        visible: text !== ""
        text: root.title.toUpperCase()
        elide: Text.ElideRight
        color: VOXTheme.orange
        font { pixelSize: 16; bold: true }
        Accessible.role: Accessible.Heading
        Accessible.name: root.title
    }

    ColumnLayout {
        id: body
        objectName: "body"
        x: root.margin
        y: root.bodyTop
        width: root.width - 2 * root.margin
        height: root.height - root.bodyTop - root.margin
        spacing: 10
    }
}
