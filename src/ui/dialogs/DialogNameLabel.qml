pragma ComponentBehavior: Bound

import QtQuick
import KvtEditor

// What a row of Qt's own dialogs for files and folders shows: the name, and below it size and date.
Item {
    id: root

    // All set by the dialog: the row, and how its second line looks.
    required property var delegate
    property int fileDetailRowWidth
    property color fileDetailRowTextColor

    readonly property real textsLeft: picture.width + delegate.spacing
    readonly property bool marked: MarkedFiles.isMarked(delegate.file)
    readonly property AppState appState: app // qmllint disable unqualified
    // Asked for each time the row is shown: the list keeps what a file was like when it was read.
    readonly property var facts: visible ? appState.fileFacts(delegate.file) : null

    implicitWidth: 200
    implicitHeight: name.height + details.height

    Rectangle {
        objectName: "mark"
        parent: root.delegate
        anchors.fill: parent
        z: -1
        visible: root.marked
        opacity: 0.3
        color: VOXTheme.orange
    }

    TapHandler {
        parent: root.delegate
        enabled: MarkedFiles.several
        onPressedChanged: {
            if (pressed)
                MarkedFiles.press(root.delegate.ListView.view.model, root.delegate.index, point.modifiers);
        }
        onCanceled: MarkedFiles.takeBack()
    }

    Image {
        id: picture
        width: 16
        height: 16
        source: root.delegate.icon.source
        anchors.verticalCenter: name.verticalCenter
    }

    RowText {
        id: name
        objectName: "fileName"
        x: root.textsLeft
        y: (root.height - root.implicitHeight) / 2
        width: root.width - x
        text: root.delegate.fileName
        elide: Text.ElideMiddle
        color: root.delegate.icon.color
        font: root.delegate.font
        // The row itself has no text that a screen reader could tell.
        Accessible.ignored: false
        Accessible.role: Accessible.StaticText
        Accessible.name: text
        Accessible.selectable: MarkedFiles.several
        Accessible.selected: root.marked
    }

    Item {
        id: details
        x: root.textsLeft
        anchors.top: name.bottom
        width: Math.min(root.width - x, root.fileDetailRowWidth > 0 ? root.fileDetailRowWidth - x : root.width)
        height: date.height

        RowText {
            objectName: "fileSize"
            visible: root.delegate.fileIsDir === false
            text: Qt.locale().formattedDataSize(root.facts?.size ?? 0)
        }

        RowText {
            id: date
            anchors.right: root.fileDetailRowWidth > 0 ? parent.right : undefined
            text: root.facts ? Qt.formatDateTime(root.facts.modified) : ""
        }
    }

    component RowText: Text {
        textFormat: Text.PlainText
        maximumLineCount: 1
        color: root.fileDetailRowTextColor
        // No smaller than the smallest text of the window.
        font.pixelSize: Math.max(11, Math.round(root.delegate.font.pixelSize * 0.75))
        Accessible.ignored: true
    }
}
