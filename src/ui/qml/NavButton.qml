import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import KvtEditor

// One entry of the sidebar; it shows its view by setting the controller's tab.
Button {
    id: root

    required property string key
    required property string hint
    readonly property AppState appState: app // qmllint disable unqualified
    readonly property bool current: appState.tab === key

    objectName: "nav_" + key
    Layout.fillWidth: true
    Layout.preferredHeight: 36
    hoverEnabled: true
    font.weight: Font.DemiBold
    onClicked: appState.tab = key

    Accessible.role: Accessible.PageTab
    Accessible.name: text
    Accessible.description: hint
    Accessible.selectable: true
    Accessible.selected: current

    contentItem: Text {
        text: root.text
        textFormat: Text.PlainText
        font: root.font
        color: root.current ? VOXTheme.orange : VOXTheme.text
        leftPadding: 10
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
    }

    background: ButtonFace {
        button: root
        color: root.current ? VOXTheme.accent(0.15) : VOXTheme.buttonFill
        edge: root.current ? 1 : 0
    }

    VOXHint {
        control: root
        text: root.hint
        wanted: (root.hovered || root.visualFocus) && !root.down
        beside: true
    }
}
