import QtQuick
import KvtEditor

// The outcome of the last operation: `ok` is 1 for success, 0 for failure, which has a sign besides the colour;
// anything else is neutral.
VOXLabel {
    id: root

    property int ok: -1

    visible: text !== ""
    wrapMode: Text.Wrap
    leftPadding: ok === 0 ? 20 : 0
    color: ok === 1 ? VOXTheme.success : ok === 0 ? VOXTheme.error : VOXTheme.muted

    Rectangle {
        objectName: "failureSign"
        visible: root.ok === 0
        x: root.horizontalAlignment === Text.AlignRight ? root.width - root.contentWidth - 20 : 0
        y: (root.height - height) / 2
        width: 14
        height: 14
        radius: 7
        color: VOXTheme.error

        Rectangle {
            x: 6
            y: 3
            width: 2
            height: 5
            color: VOXTheme.bg
        }

        Rectangle {
            x: 6
            y: 9
            width: 2
            height: 2
            color: VOXTheme.bg
        }
    }
}
