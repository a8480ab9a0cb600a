import QtQuick
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

    VOXLabel {
        objectName: "hexInfo"
        text: root.hexModel.byteCount + " bytes  •  offset 0x" + root.offset
        font.family: VOXTheme.fixedFamily
    }

    StatusLine {
        objectName: "hexStatus"
        // Of a text without end only so much is laid out as could ever be in sight.
        text: root.appState.status.slice(0, 2000)
        ok: root.appState.statusOK
        maximumLineCount: 1
        elide: Text.ElideRight
        horizontalAlignment: Text.AlignRight
        Layout.fillWidth: true
    }
}
