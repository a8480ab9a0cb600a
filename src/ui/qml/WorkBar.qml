import QtQuick
import KvtEditor

// A slim bar that runs while something is at work whose end is not known. It takes no place of its own.
Item {
    id: root

    property bool running: false

    height: 2
    visible: running
    clip: true

    Accessible.role: Accessible.ProgressBar
    Accessible.name: "At work"
    Accessible.ignored: !running

    Rectangle {
        width: root.width / 4
        height: parent.height
        radius: 1
        color: VOXTheme.orangeBright

        NumberAnimation on x {
            running: root.running
            loops: Animation.Infinite
            from: -root.width / 4
            to: root.width
            duration: 1400
            easing.type: Easing.InOutQuad
        }
    }
}
