pragma ComponentBehavior: Bound

import QtQuick.Layouts
import KvtEditor

// The nine identifiers of a file with one module. A field stays bound to the value it edits: typing does not
// break that, and what the service sends later still arrives.
ColumnLayout {
    id: root

    readonly property AppState appState: app // qmllint disable unqualified

    spacing: 10
    Layout.fillWidth: true

    Identifier {
        objectName: "vinField"
        title: "VIN"
        input.focus: true
        value: root.appState.vin
        onEdited: value => root.appState.vin = value
    }

    Identifier {
        objectName: "serialField"
        title: "Serial Number"
        value: root.appState.serial
        onEdited: value => root.appState.serial = value
    }

    Identifier {
        objectName: "mainOSField"
        title: "Main OS"
        value: root.appState.mainOS
        onEdited: value => root.appState.mainOS = value
    }

    Identifier {
        objectName: "systemField"
        title: "System"
        value: root.appState.system
        onEdited: value => root.appState.system = value
    }

    Identifier {
        objectName: "fuelField"
        title: "Fuel System"
        value: root.appState.fuel
        onEdited: value => root.appState.fuel = value
    }

    Identifier {
        objectName: "speedometerField"
        title: "Speedometer"
        value: root.appState.speedometer
        onEdited: value => root.appState.speedometer = value
    }

    Identifier {
        objectName: "engineDiagField"
        title: "Engine Diag"
        value: root.appState.engineDiag
        onEdited: value => root.appState.engineDiag = value
    }

    Identifier {
        objectName: "engineOpField"
        title: "Engine Op"
        value: root.appState.engineOp
        onEdited: value => root.appState.engineOp = value
    }

    Identifier {
        objectName: "interfaceIDField"
        title: "Interface ID"
        value: root.appState.interfaceID
        onEdited: value => root.appState.interfaceID = value
    }

    // To lay out a long value takes long: only the field that has the keyboard holds it whole.
    component Identifier: VOXTextField {
        required property string value
        property bool whole: false

        unlimitedLength: true
        text: whole ? value : value.slice(0, 32767)
        onEdited: now => IdentifierEdits.note(title, value, now)
        input.onActiveFocusChanged: {
            const place = input.cursorPosition;
            whole = input.activeFocus;
            if (whole && input.cursorPosition !== place)
                input.cursorPosition = place;
        }
    }
}
