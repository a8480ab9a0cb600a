import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import KvtEditor

// A check box beside its label; only the box takes clicks.
RowLayout {
    id: root

    property alias text: label.text
    property alias checked: box.checked
    property alias input: box
    property alias caption: label

    signal toggled(bool checked)

    spacing: 10
    Layout.fillWidth: true

    CheckBox {
        id: box
        objectName: "box"
        implicitWidth: 22
        implicitHeight: 22
        padding: 0
        spacing: 0
        Layout.alignment: Qt.AlignVCenter
        Accessible.role: Accessible.CheckBox
        Accessible.name: root.text
        onToggled: root.toggled(checked)
        // Ignores auto-repeat.
        Keys.onPressed: event => event.accepted = event.isAutoRepeat && event.key === Qt.Key_Space
        Keys.onReleased: event => event.accepted = event.isAutoRepeat && event.key === Qt.Key_Space

        contentItem: Item {
            implicitWidth: 0
            implicitHeight: 0
        }

        indicator: Rectangle {
            implicitWidth: 20
            implicitHeight: 20
            y: (parent.height - height) / 2
            radius: 4
            color: VOXTheme.input
            opacity: box.enabled ? 1 : 0.45
            border.width: box.visualFocus ? 2 : 1
            border.color: box.visualFocus ? VOXTheme.focusRing : box.checked ? VOXTheme.orange : VOXTheme.border

            Rectangle {
                anchors { fill: parent; margins: 5 }
                radius: 2
                color: VOXTheme.orange
                visible: box.checked
            }
        }
    }

    // No VOXLabel: it has the size of the desktop's own texts.
    Label {
        id: label
        objectName: "label"
        Layout.fillWidth: true
        Layout.alignment: Qt.AlignVCenter
        textFormat: Text.PlainText
        wrapMode: Text.WordWrap
        color: enabled ? VOXTheme.text : VOXTheme.disabledText
        Accessible.ignored: true
    }
}
