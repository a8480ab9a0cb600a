import QtQuick
import KvtEditor

// One hit of the folder search. Only a tune file opens; anything else shows that a click does nothing.
VOXListRow {
    id: root

    required property var modelData
    required property int index
    required property SearchColumns columns
    readonly property string file: modelData.name

    objectName: "searchHit" + index
    height: 32
    fullText: file
    shortened: fileText.truncated
    clickable: file.slice(-4).toLowerCase() === ".kvt"

    Accessible.name: file + ", OS " + modelData.os + ", year " + modelData.year + ", make " + modelData.make

    Row {
        x: root.columns.margin
        height: parent.height
        spacing: root.columns.gap

        HitText {
            id: fileText
            objectName: "file"
            text: root.file
            elide: Text.ElideMiddle
            color: root.clickable ? VOXTheme.text : VOXTheme.muted
            width: root.columns.file
        }

        HitText {
            objectName: "os"
            text: root.modelData.os
            width: root.columns.os
        }

        HitText {
            objectName: "year"
            text: root.modelData.year
            width: root.columns.year
        }

        HitText {
            objectName: "make"
            text: root.modelData.make
            width: root.columns.make
        }
    }

    component HitText: Text {
        height: parent.height
        textFormat: Text.PlainText
        maximumLineCount: 1
        elide: Text.ElideRight
        color: VOXTheme.muted
        font.pixelSize: 12
        verticalAlignment: Text.AlignVCenter
        Accessible.ignored: true
    }
}
