import QtQuick.Layouts
import KvtEditor

// The nine identifiers of a file with one module. A field stays bound to the value it edits: typing does not
// break that, and what the service sends later still arrives.
ColumnLayout {
    id: root

    readonly property AppState appState: app // qmllint disable unqualified

    spacing: 10
    Layout.fillWidth: true

    VOXTextField {
        objectName: "vinField"
        title: "VIN"
        text: root.appState.vin
        onEdited: value => root.appState.vin = value
    }

    VOXTextField {
        objectName: "serialField"
        title: "Serial Number"
        text: root.appState.serial
        onEdited: value => root.appState.serial = value
    }

    VOXTextField {
        objectName: "mainOSField"
        title: "Main OS"
        text: root.appState.mainOS
        onEdited: value => root.appState.mainOS = value
    }

    VOXTextField {
        objectName: "systemField"
        title: "System"
        text: root.appState.system
        onEdited: value => root.appState.system = value
    }

    VOXTextField {
        objectName: "fuelField"
        title: "Fuel System"
        text: root.appState.fuel
        onEdited: value => root.appState.fuel = value
    }

    VOXTextField {
        objectName: "speedometerField"
        title: "Speedometer"
        text: root.appState.speedometer
        onEdited: value => root.appState.speedometer = value
    }

    VOXTextField {
        objectName: "engineDiagField"
        title: "Engine Diag"
        text: root.appState.engineDiag
        onEdited: value => root.appState.engineDiag = value
    }

    VOXTextField {
        objectName: "engineOpField"
        title: "Engine Op"
        text: root.appState.engineOp
        onEdited: value => root.appState.engineOp = value
    }

    VOXTextField {
        objectName: "interfaceIDField"
        title: "Interface ID"
        text: root.appState.interfaceID
        onEdited: value => root.appState.interfaceID = value
    }
}
