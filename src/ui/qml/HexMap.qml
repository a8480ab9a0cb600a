pragma ComponentBehavior: Bound

import QtQuick
import KvtEditor

// A thin map of the whole file, from top to bottom: where it differs from the other one.
Rectangle {
    id: root

    required property HexCompare compare
    property var runs: []

    // A part of the file from 0 to 1 was clicked.
    signal chosen(real part)

    function redraw(): void {
        runs = visible ? compare.map(Math.floor(height)) : [];
    }

    color: VOXTheme.input
    onHeightChanged: redraw()
    onVisibleChanged: redraw()
    Component.onCompleted: redraw()
    Accessible.ignored: true

    Connections {
        target: root.compare
        function onChanged(): void {
            root.redraw();
        }
    }

    Repeater {
        model: Math.floor(root.runs.length / 2)

        Rectangle {
            required property int index

            objectName: "mapRun" + index
            y: root.runs[2 * index]
            width: root.width
            height: Math.max(2, root.runs[2 * index + 1] - y)
            color: VOXTheme.mapMark
        }
    }

    MouseArea {
        anchors.fill: parent
        onPressed: mouse => root.chosen(mouse.y / height)
        onPositionChanged: mouse => root.chosen(mouse.y / height)
    }
}
