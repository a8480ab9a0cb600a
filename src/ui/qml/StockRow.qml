import QtQuick
import KvtEditor

// One stock file. The background shows the selection only.
ListColumnsRow {
    id: root

    required property var row
    property bool selected: false
    readonly property AppState appState: app // qmllint disable unqualified
    // Longer texts are cut before layout: no column could show them.
    readonly property int longest: 400

    // On one line; a long text keeps its beginning and its end.
    function shown(text: string): string {
        const whole = text.length <= longest ? text
            : text.slice(0, longest / 2) + "…" + text.slice(-longest / 2);
        return whole.replace(/[\r\n\u2028\u2029]+/g, " ");
    }

    objectName: "stockRow" + index
    clickable: true
    color: selected ? VOXTheme.accent(0.18) : "transparent"
    record: row.make !== "" ? row : Object.assign({}, row, { make: row.year })
    texts: values.map(value => shown(value))
    // The name that the file will be saved under.
    tips: [appState.stockFileName(row.filename)].concat(values.slice(1))

    Accessible.selected: selected
}
