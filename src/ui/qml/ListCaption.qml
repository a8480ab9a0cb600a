import QtQuick
import QtQuick.Controls.Basic
import KvtEditor

// The heading of one column of a list.
Label {
    textFormat: Text.PlainText
    color: VOXTheme.muted
    elide: Text.ElideRight
    font { pixelSize: 11; weight: Font.DemiBold }
    Accessible.role: Accessible.ColumnHeader
    Accessible.name: text
}
