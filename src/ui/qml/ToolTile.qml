import QtQuick
import QtQuick.Layouts
import KvtEditor

// One tool: its icon over its name.
VOXButton {
    id: root

    required property string key
    required property string picture
    property bool comingSoon: false
    // A tool that is there but has to wait.
    property bool available: true
    readonly property bool lit: hovered && enabled

    objectName: "tile_" + key
    enabled: !comingSoon && available
    padding: 8
    // Equal shares, however wide the labels are.
    Layout.preferredWidth: 1
    Layout.preferredHeight: 150

    Accessible.name: comingSoon ? text + ", coming soon" : text

    contentItem: ColumnLayout {
        spacing: 10
        opacity: root.available ? 1 : 0.45

        Item {
            Layout.fillHeight: true
        }

        Image {
            objectName: "icon"
            source: "qrc:/qt/qml/KvtEditor/src/ui/assets/tools/" + root.picture
            mipmap: true
            asynchronous: true
            Layout.alignment: Qt.AlignHCenter
            Layout.preferredWidth: 60
            Layout.preferredHeight: 60
            Accessible.ignored: true
        }

        Text {
            objectName: "label"
            text: root.text
            textFormat: Text.PlainText
            font: root.font
            color: VOXTheme.text
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            maximumLineCount: 3
            elide: Text.ElideRight
            Layout.fillWidth: true
            Accessible.ignored: true
        }

        Item {
            Layout.fillHeight: true
        }
    }

    background: Rectangle {
        radius: VOXTheme.radiusControl
        color: VOXTheme.input
        border.width: root.visualFocus ? 2 : 1
        border.color: root.visualFocus ? VOXTheme.focusRing : root.lit ? VOXTheme.orange : VOXTheme.border

        Rectangle {
            objectName: "tint"
            anchors.fill: parent
            radius: parent.radius
            color: VOXTheme.accent(root.down ? 0.28 : 0.18)
            visible: root.lit || root.down
        }
    }

    Rectangle {
        objectName: "scrim"
        anchors.fill: parent
        z: 1
        visible: root.comingSoon
        radius: VOXTheme.radiusControl
        color: VOXTheme.scrim

        VOXLabel {
            anchors.centerIn: parent
            rotation: -18
            text: "COMING SOON"
            color: VOXTheme.orangeBright
            font { pixelSize: 14; bold: true; letterSpacing: 1 }
            Accessible.ignored: true
        }
    }
}
