import QtQuick
import QtQuick.Layouts
import KvtEditor

// Product title and version, and the two buttons that belong to no view.
Rectangle {
    id: root

    readonly property AppState appState: app // qmllint disable unqualified

    Layout.fillWidth: true
    Layout.preferredHeight: 64
    implicitHeight: 64
    gradient: Gradient {
        orientation: Gradient.Horizontal
        GradientStop { position: 0; color: VOXTheme.accent(0.14) }
        GradientStop { position: 0.45; color: VOXTheme.bar }
        GradientStop { position: 1; color: VOXTheme.bar }
    }

    RowLayout {
        anchors { fill: parent; leftMargin: 20; rightMargin: 20 }
        spacing: 10

        ColumnLayout {
            spacing: 2

            VOXLabel {
                text: "KVT File Editor 2026"
                elide: Text.ElideRight
                muted: false
                font { pixelSize: 20; bold: true }
                Layout.fillWidth: true
                Accessible.role: Accessible.Heading
            }

            VOXLabel {
                objectName: "versionLabel"
                text: "v" + root.appState.version
                Accessible.name: "Version " + root.appState.version
            }
        }

        VOXButton {
            objectName: "helpButton"
            text: "HELP"
            hint: "F1"
            implicitWidth: 90
            Layout.fillWidth: false
            onClicked: root.appState.goHelp()
        }

        VOXButton {
            objectName: "updatesButton"
            text: "UPDATES"
            implicitWidth: 110
            Layout.fillWidth: false
            onClicked: root.appState.checkUpdate()
        }
    }
}
