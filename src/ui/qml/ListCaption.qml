import QtQuick
import KvtEditor

// The heading of one column of a list.
VOXLabel {
    elide: Text.ElideRight
    font { pixelSize: 11; weight: Font.DemiBold }
    Accessible.role: Accessible.ColumnHeader
}
