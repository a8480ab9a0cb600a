import QtQuick
import QtQuick.Layouts
import KvtEditor

// The inspector and the list of differences, beside the rows or below them.
GridLayout {
    id: root

    property bool inspecting: false
    property bool listing: false
    // Whether there is more room from left to right than from top to bottom.
    property bool low: false
    readonly property AppState appState: app // qmllint disable unqualified

    // The keyboard was in a part that is hidden now.
    signal keyboardLost()

    readonly property bool sideBySide: low || width >= 700

    columns: sideBySide ? 2 : 1
    columnSpacing: 8
    rowSpacing: 8

    HexInspectorPanel {
        objectName: "hexInspector"
        visible: root.inspecting
        onVisibleChanged: {
            if (!visible && activeFocus)
                root.keyboardLost();
        }
        hexModel: root.appState.hexModel
        wide: root.low && !root.listing
        Layout.fillWidth: true
        Layout.fillHeight: true
    }

    HexDifferences {
        objectName: "hexDifferences"
        visible: root.listing
        onVisibleChanged: {
            if (!visible && hasFocus)
                root.keyboardLost();
        }
        Layout.fillWidth: true
        Layout.fillHeight: true
    }
}
