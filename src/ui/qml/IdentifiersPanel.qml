pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import KvtEditor

// The identifiers of the open file: one set to edit, or every module's own when the file holds several.
VOXCard {
    id: root

    readonly property AppState appState: app // qmllint disable unqualified
    // The blocks are made anew with the list, which loses the place in it, and every identifier's change
    // announces the list: by way of its text, only a list that differs arrives.
    readonly property string modulesText: JSON.stringify(appState.modules)
    readonly property var modules: JSON.parse(modulesText)
    readonly property bool severalModules: modules.length > 1

    objectName: "identifiersPanel"
    title: "Identifiers"

    VOXScroll {
        objectName: "identifierFields"
        visible: !root.severalModules

        IdentifierFields {}

        Item {
            Layout.fillHeight: true
        }
    }

    VOXScroll {
        objectName: "moduleList"
        visible: root.severalModules
        spacing: 18

        Repeater {
            model: root.severalModules ? root.modules : []

            ModuleBlock {}
        }

        VOXTextField {
            objectName: "sharedInterfaceIDField"
            visible: text !== ""
            title: "Interface ID"
            text: root.appState.interfaceID
            locked: true
        }

        Item {
            Layout.fillHeight: true
        }
    }
}
