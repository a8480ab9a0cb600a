pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import KvtEditor

// What one control module of the file says about itself.
ColumnLayout {
    id: root

    required property var modelData
    required property int index
    // Of a title without end only so much is laid out as could ever be in sight.
    readonly property string title: modelData.title ?? ""
    readonly property var rows: modelData.rows ?? []

    objectName: "module" + index
    spacing: 10
    Layout.fillWidth: true

    Label {
        objectName: "moduleTitle"
        text: root.title.slice(0, 200)
        textFormat: Text.PlainText
        wrapMode: Text.Wrap
        maximumLineCount: 2
        elide: Text.ElideRight
        color: VOXTheme.orange
        font { pixelSize: 13; bold: true }
        Layout.fillWidth: true
        Accessible.role: Accessible.Heading
        Accessible.name: root.title
    }

    Rectangle {
        Layout.fillWidth: true
        Layout.preferredHeight: 1
        color: VOXTheme.border
    }

    VOXTextField {
        objectName: "moduleVin"
        visible: text !== ""
        title: "VIN"
        text: root.modelData.vin ?? ""
        locked: true
    }

    VOXTextField {
        objectName: "moduleSerial"
        visible: text !== ""
        title: "Serial Number"
        text: root.modelData.serial ?? ""
        locked: true
    }

    VOXTextField {
        objectName: "moduleMainOS"
        title: "Main OS"
        text: root.modelData.mainOs ?? ""
        locked: true
    }

    Repeater {
        model: root.rows

        VOXTextField {
            required property var modelData
            required property int index

            objectName: "moduleRow" + index
            title: modelData.label ?? ""
            text: modelData.value ?? ""
            locked: true
        }
    }
}
