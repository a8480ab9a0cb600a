import QtQuick
import KvtEditor

// One line of the list of modules: a module's heading over a thin rule, or one of its fields. It says which
// of them `line` tells, for a line that scrolls out of sight comes back as another.
FocusScope {
    id: root

    required property int index
    required property var line
    readonly property bool heading: line.heading ?? false
    // Blocks stand further apart than the lines of one.
    readonly property int gap: index === 0 ? 0 : heading || line.apart ? 18 : 10
    readonly property string title: line.title
    readonly property string text: line.value ?? ""

    visible: !line.hidden
    // Not by `visible`, which is false for every line of a list that is out of sight: lines without height
    // would all be made at once.
    implicitHeight: line.hidden ? 0 : heading ? rule.y + rule.height : field.y + field.implicitHeight

    VOXLabel {
        id: label
        objectName: "moduleTitle"
        anchors { left: parent.left; right: parent.right }
        y: root.gap
        visible: root.heading
        // Of a title without end only so much is laid out as could ever be in sight.
        text: root.heading ? root.title.slice(0, 200) : ""
        wrapMode: Text.Wrap
        maximumLineCount: 2
        elide: Text.ElideRight
        color: VOXTheme.orange
        font { pixelSize: 13; bold: true }
        Accessible.role: Accessible.Heading
        Accessible.name: root.title
    }

    Rectangle {
        id: rule
        objectName: "rule"
        anchors { left: parent.left; right: parent.right }
        y: label.y + label.height + 10
        height: 1
        visible: root.heading
        color: VOXTheme.border
    }

    ReadOnlyField {
        id: field
        anchors { left: parent.left; right: parent.right }
        y: root.gap
        visible: !root.heading
        enabled: visible
        title: root.heading ? "" : root.title
        value: root.text
        input.focus: true
        input.activeFocusOnTab: false
    }
}
