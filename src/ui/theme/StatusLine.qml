import QtQuick
import QtQuick.Controls.Basic
import KvtEditor

// The outcome of the last operation: `ok` is 1 for success, 0 for failure, anything else is neutral.
Label {
    property int ok: -1

    visible: text !== ""
    textFormat: Text.PlainText
    wrapMode: Text.Wrap
    font.pixelSize: 12
    color: ok === 1 ? VOXTheme.success : ok === 0 ? VOXTheme.error : VOXTheme.muted

    Accessible.role: Accessible.StaticText
    Accessible.name: text
}
