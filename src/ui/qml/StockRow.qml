import QtQuick
import KvtEditor

// One stock file. Its ground tells the selection and nothing else.
VOXListRow {
    id: root

    required property var row
    required property int index
    required property StockColumns columns
    property bool selected: false

    readonly property AppState appState: app // qmllint disable unqualified
    readonly property string file: row.filename
    readonly property string savedAs: appState.stockFileName(file)
    readonly property string makeOrYear: row.make !== "" ? row.make : row.year
    readonly property string module: row.module
    readonly property var cells: [fileText, makeText, moduleText]
    // Nothing is laid out that no column could show.
    readonly property int longest: 400

    // One line, with the ends of a text that is longer than any place for it.
    function shown(text: string): string {
        const whole = text.length <= longest ? text
            : text.slice(0, longest / 2) + "…" + text.slice(-longest / 2);
        return whole.replace(/[\r\n\u2028\u2029]+/g, " ");
    }

    objectName: "stockRow" + index
    height: 32
    clickable: true
    color: selected ? VOXTheme.accent(0.18) : "transparent"
    shortened: cells.some(cell => cell.shortened)
    fullText: cells.filter(cell => cell.shortened).map(cell => cell.tip).join("\n")

    Accessible.name: file + ", make " + makeOrYear + ", module " + module
    Accessible.selected: selected

    Row {
        x: root.columns.margin
        height: parent.height
        spacing: root.columns.gap

        Cell {
            id: fileText
            objectName: "file"
            whole: root.file
            tip: root.savedAs
            text: root.shown(whole)
            elide: Text.ElideMiddle
            color: VOXTheme.text
            width: root.columns.file
        }

        Cell {
            id: makeText
            objectName: "make"
            whole: root.makeOrYear
            text: root.shown(whole)
            width: root.columns.side
        }

        Cell {
            id: moduleText
            objectName: "module"
            whole: root.module
            text: root.shown(whole)
            width: root.columns.side
        }
    }

    component Cell: Text {
        property string whole
        property string tip: whole
        readonly property bool shortened: truncated || text !== tip

        height: parent.height
        textFormat: Text.PlainText
        elide: Text.ElideRight
        color: VOXTheme.muted
        font.pixelSize: 12
        verticalAlignment: Text.AlignVCenter
        Accessible.ignored: true
    }
}
