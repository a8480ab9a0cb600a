import QtQuick
import KvtEditor

// Says that the service is at work. It keeps its place while it does not run, so that nothing beside it
// moves.
Item {
    id: root

    property bool running: false

    implicitWidth: mark.implicitWidth
    implicitHeight: mark.implicitHeight

    Row {
        id: mark
        visible: root.running
        spacing: 8

        Rectangle {
            anchors.verticalCenter: parent.verticalCenter
            width: 8
            height: 8
            radius: 4
            color: VOXTheme.orangeBright

            SequentialAnimation on opacity {
                running: root.running
                loops: Animation.Infinite
                NumberAnimation { from: 1; to: 0.25; duration: 600; easing.type: Easing.InOutQuad }
                NumberAnimation { from: 0.25; to: 1; duration: 600; easing.type: Easing.InOutQuad }
            }
        }

        VOXLabel {
            text: "Working..."
            muted: false
        }
    }
}
