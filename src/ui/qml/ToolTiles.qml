import QtQuick.Layouts
import KvtEditor

// The tools: those of this program, and the ones that it starts.
GridLayout {
    id: root

    readonly property AppState appState: app // qmllint disable unqualified

    signal conversionWanted(string kind)
    signal vinHexWanted()

    columns: 3
    rowSpacing: 8
    columnSpacing: 8

    ToolTile {
        key: "vbfphf"
        picture: "vbf.png"
        text: "VOX - VBF/PHF <-> BIN"
        onClicked: root.appState.launchTool("vbfphf")
    }

    ToolTile {
        key: "xcal"
        picture: "xcal.png"
        text: "XCAL to BIN"
        available: !root.appState.busy
        onClicked: root.conversionWanted("xcal")
    }

    ToolTile {
        key: "ecfg"
        picture: "ecfg.png"
        text: "ECFG2XDF (Beta)"
        available: !root.appState.busy
        onClicked: root.conversionWanted("ecfg")
    }

    ToolTile {
        key: "j1939"
        picture: "j1939.png"
        text: "J1939 DTC Converter"
        comingSoon: root.appState.isMacOS
        onClicked: root.appState.launchTool("j1939")
    }

    ToolTile {
        key: "vin2hex"
        picture: "vin2hex.png"
        text: "VIN2HEX / ASCII"
        onClicked: root.vinHexWanted()
    }

    ToolTile {
        key: "checksum"
        picture: "checksum.png"
        text: "Checksum Calculator"
        comingSoon: root.appState.isMacOS
        onClicked: root.appState.launchTool("checksum")
    }

    ToolTile {
        key: "delco"
        picture: "delco.png"
        text: "Delco Checksum GUI"
        onClicked: root.appState.openWebTool(root.appState.serviceUrl("checksum-gui.html"), text)
    }

    ToolTile {
        key: "efd"
        picture: "efd.png"
        text: "VOX EFD Reader"
        comingSoon: root.appState.isMacOS
        onClicked: root.appState.launchTool("efd")
    }
}
