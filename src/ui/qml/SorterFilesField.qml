import QtQuick
import KvtEditor

// Shows how many files are chosen, and takes tune files that are dropped on it.
Item {
    id: root

    property alias text: field.text
    readonly property Item input: field.input

    signal filesDropped(var urls)

    // Files of this computer only: whatever else is dropped has no path to copy from.
    function tuneFiles(urls: var): var {
        return Array.from(urls).filter(url => {
            const text = String(url).toLowerCase();
            return text.startsWith("file:///") && text.endsWith(".kvt");
        });
    }

    implicitWidth: field.implicitWidth
    implicitHeight: field.implicitHeight

    VOXTextField {
        id: field
        anchors.fill: parent
        title: "Source files"
        locked: true
    }

    Rectangle {
        anchors { left: parent.left; right: parent.right; bottom: parent.bottom }
        height: root.input.height
        visible: dropArea.containsDrag
        radius: VOXTheme.radiusControl
        color: VOXTheme.accent(0.15)
        border.width: 2
        border.color: VOXTheme.orangeBright
    }

    DropArea {
        id: dropArea
        anchors.fill: parent
        onEntered: drag => drag.accepted = root.tuneFiles(drag.urls).length > 0
        onDropped: drop => {
            const urls = root.tuneFiles(drop.urls);
            drop.accepted = urls.length > 0;
            if (drop.accepted)
                root.filesDropped(urls);
        }
    }
}
