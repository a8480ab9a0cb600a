import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import KvtEditor

// A captioned line of text. `edited` tells of the user's typing only, so that `text` may stay bound to what
// the edit changes.
ColumnLayout {
    id: root

    property string title
    property alias text: field.text
    property alias input: field
    property bool locked: false
    property bool secret: false

    signal edited(string value)

    spacing: 4
    Layout.fillWidth: true

    Label {
        objectName: "caption"
        Layout.fillWidth: true
        text: root.title.slice(0, 200).toUpperCase()
        textFormat: Text.PlainText
        elide: Text.ElideRight
        color: VOXTheme.muted
        font { pixelSize: 11; weight: Font.DemiBold }
        Accessible.ignored: true
    }

    VOXField {
        id: field
        objectName: "field"
        Layout.fillWidth: true
        readOnly: root.locked
        echoMode: root.secret ? TextInput.Password : TextInput.Normal
        Accessible.name: root.title
        onTextEdited: root.edited(text)
    }
}
