pragma ComponentBehavior: Bound

import QtQuick
import KvtEditor

// A row of a list in columns. The first column is emphasized.
VOXListRow {
    id: root

    required property int index
    required property ListHeading heading
    // The row's data, by the keys of the columns.
    property var record
    readonly property var values: Array.from(heading.columns, column => record[column.key])
    // What the cells show, and the tool tips of those that are cut short.
    property var texts: values
    property var tips: values
    // The space for an icon before the first text.
    property real indent: 0
    readonly property var cutTips: tips.filter((tip, column) => tip !== texts[column] || isCut(column))

    function isCut(column: int): bool {
        return cells.count > column && (cells.itemAt(column) as Text)?.truncated === true;
    }

    height: 32
    fullText: cutTips.join("\n")
    shortened: cutTips.length > 0

    Accessible.name: Array.from(heading.columns, (column, place) =>
        (place > 0 ? column.spoken + " " : "") + values[place]).join(", ")

    Row {
        x: root.heading.margin
        height: root.height
        spacing: root.heading.spacing

        Repeater {
            id: cells
            model: root.heading.columns

            Text {
                required property ListColumn modelData
                required property int index

                objectName: modelData.cell
                width: root.heading.widthOf(modelData)
                height: root.height
                leftPadding: index === 0 ? root.indent : 0
                text: root.texts[index]
                textFormat: Text.PlainText
                maximumLineCount: 1
                elide: index === 0 ? Text.ElideMiddle : Text.ElideRight
                color: index === 0 && root.clickable ? VOXTheme.text : VOXTheme.muted
                font.pixelSize: 12
                verticalAlignment: Text.AlignVCenter
                Accessible.ignored: true
            }
        }
    }
}
