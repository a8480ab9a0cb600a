pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import KvtEditor

// Logo and navigation.
Item {
    id: root

    required property var tabs

    Layout.preferredWidth: VOXTheme.sidebarIdeal
    Layout.minimumWidth: VOXTheme.sidebarMin
    Layout.maximumWidth: VOXTheme.sidebarMax
    Layout.fillHeight: true

    ColumnLayout {
        anchors { fill: parent; margins: 12 }
        spacing: 6

        Image {
            objectName: "logo"
            source: "qrc:/qt/qml/KvtEditor/src/ui/assets/vox-logo.png"
            fillMode: Image.PreserveAspectFit
            mipmap: true
            smooth: true
            asynchronous: true
            Layout.alignment: Qt.AlignHCenter
            Layout.fillWidth: true
            Layout.preferredHeight: 100
            Layout.topMargin: 6
            Accessible.role: Accessible.Graphic
            Accessible.name: "VOX"
        }

        VOXLabel {
            text: "VOX - KVT Editor"
            muted: false
            font { pixelSize: 18; bold: true }
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.WordWrap
            Layout.fillWidth: true
            Layout.bottomMargin: 10
        }

        Repeater {
            model: root.tabs

            NavButton {
                required property var modelData
                required property int index

                key: modelData.key
                text: modelData.title
                hint: "Ctrl+" + (index + 1)
            }
        }

        Item {
            Layout.fillHeight: true
        }

        NavButton {
            key: "feedback"
            text: "FEEDBACK"
            hint: "Ctrl+0"
        }
    }
}
