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

    // The keyboard goes along, for what is typed must not change what is out of sight.
    onSeveralModulesChanged: {
        if (severalModules && fields.focus)
            list.focus = true;
        else if (!severalModules && list.focus)
            fields.focus = true;
    }

    ModuleLines {
        id: moduleLines
        modules: root.appState.modules
    }

    FocusScope {
        id: fields
        visible: !root.severalModules
        enabled: !root.severalModules
        Layout.fillWidth: true
        Layout.fillHeight: true

        VOXScroll {
            objectName: "identifierFields"
            anchors.fill: parent

            IdentifierFields {}

            Item {
                Layout.fillHeight: true
            }
        }
    }

    ModuleList {
        id: list
        objectName: "moduleList"
        visible: root.severalModules
        enabled: root.severalModules
        lines: moduleLines
        interfaceID: root.appState.interfaceID
    }
}
