import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import KvtEditor

// Size and cursor, and beside them the outcome of a search or patch: the window's own status line is covered
// here.
RowLayout {
    id: root

    readonly property AppState appState: app // qmllint disable unqualified
    readonly property HexModel hexModel: appState.hexModel
    readonly property string offset: hexModel.cursor.toString(16).toUpperCase()

    spacing: 24

    // No VOXLabel: it has the size of the desktop's own texts.
    Label {
        objectName: "hexInfo"
        text: root.hexModel.byteCount + " bytes  •  offset 0x" + root.offset
        textFormat: Text.PlainText
        color: VOXTheme.muted
        font.family: VOXTheme.fixedFamily
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }

    AppStatus {
        objectName: "hexStatus"
        maximumLineCount: 1
        horizontalAlignment: Text.AlignRight
        Layout.fillWidth: true
    }
}
