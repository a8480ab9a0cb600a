import QtQuick
import QtQuick.Controls.Basic
import KvtEditor

// A plain text, read out as it stands: what it shows may come from a file or from the service.
Label {
    property bool muted: true

    textFormat: Text.PlainText
    color: muted ? VOXTheme.muted : VOXTheme.text
    font.pixelSize: 12
    Accessible.role: Accessible.StaticText
    Accessible.name: text
}
