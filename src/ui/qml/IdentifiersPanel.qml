pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import KvtEditor

// The identifiers of the open file: one set to edit, or every module's own when the file holds several.
VOXCard {
    id: root

    readonly property AppState appState: app // qmllint disable unqualified
    readonly property bool severalModules: moduleLines.moduleCount > 1

    objectName: "identifiersPanel"
    title: "Identifiers"

    ModuleLines {
        id: moduleLines
        modules: root.appState.modules
    }

    VOXScroll {
        objectName: "identifierFields"
        visible: !root.severalModules

        IdentifierFields {}

        Item {
            Layout.fillHeight: true
        }
    }

    ModuleList {
        objectName: "moduleList"
        visible: root.severalModules
        lines: moduleLines
        interfaceID: root.appState.interfaceID
    }
}
