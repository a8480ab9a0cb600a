import QtQuick
import QtQuick.Layouts
import KvtEditor

// Converts the open file, or a chosen one, by the service.
Item {
    id: root

    readonly property AppState appState: app // qmllint disable unqualified
    // The service takes one conversion at a time.
    readonly property bool idle: !appState.busy
    // What the file that is being picked is for.
    property string conversion
    property string headerPath

    function pickInput(key: string): void {
        conversion = key;
        inputDialog.ask();
    }

    // The export is looked for where its header was.
    function pickExport(header: string): void {
        headerPath = header;
        exportDialog.currentFolder = headerDialog.currentFolder;
        exportDialog.ask();
    }

    objectName: "convertView"

    PickFileDialog {
        id: inputDialog
        objectName: "convertInputDialog"
        title: "Open Calibration"
        nameFilters: ["Calibration (*.bin *.kvt *.ctz *)", "All files (*)"]
        onTaken: path => root.appState.convertOp(root.conversion, path)
    }

    PickFileDialog {
        id: headerDialog
        objectName: "convertHeaderDialog"
        title: "Open Header BIN"
        nameFilters: ["BIN (*.bin)", "All files (*)"]
        onTaken: path => root.pickExport(path)
    }

    PickFileDialog {
        id: exportDialog
        objectName: "convertExportDialog"
        title: "Open Export BIN"
        nameFilters: ["BIN (*.bin)", "All files (*)"]
        stays: true
        onTaken: path => root.appState.convertOp("cm2450_import", root.headerPath, path)
    }

    RowLayout {
        anchors { fill: parent; margins: 20 }
        spacing: 16

        VOXCard {
            title: "Workspace"
            // Keeps the widths of its texts out of the layout: the card is as wide as the one on MAIN.
            Layout.preferredWidth: 300
            Layout.fillHeight: true

            VOXScroll {
                objectName: "convertScroll"

                FileFields {}

                ConversionGrid {
                    enabled: root.idle
                    Layout.topMargin: 4

                    ConversionButton {
                        objectName: "convertBinToKvt"
                        text: "BIN → KVT"
                        onClicked: root.pickInput("bin2kvt")
                    }

                    ConversionButton {
                        objectName: "convertKvtToBin"
                        text: "KVT → BIN"
                        onClicked: root.appState.convertOp("kvt2bin", "")
                    }
                }

                VOXLabel {
                    objectName: "convertCaption"
                    text: "CM2450 Only"
                    color: VOXTheme.orange
                    font { pixelSize: 12; weight: Font.DemiBold }
                    Layout.topMargin: 4
                    Accessible.role: Accessible.Heading
                }

                ConversionGrid {
                    enabled: root.idle
                    ConversionButton {
                        objectName: "convertKvtToBinCm2450"
                        text: "KVT → BIN (CM2450)"
                        onClicked: root.appState.convertOp("cm2450_kvt2bin", "")
                    }

                    ConversionButton {
                        objectName: "convertBinToKvtCm2450"
                        text: "BIN → KVT (CM2450)"
                        onClicked: headerDialog.ask()
                    }
                }

                VOXLabel {
                    objectName: "convertModulesNote"
                    text: "Supported modules: E41 (L5P), E86A, E86B (LML), T87, T87A, A50, CM2450, CM2350B"
                    wrapMode: Text.Wrap
                    Layout.fillWidth: true
                }

                ConversionGrid {
                    enabled: root.idle
                    Layout.topMargin: 4

                    ConversionButton {
                        objectName: "convertCtzToBin"
                        text: "CTZ → BIN"
                        onClicked: root.pickInput("ctz2bin")
                    }
                }

                ConversionGrid {
                    enabled: root.idle
                    ConversionButton {
                        objectName: "convertKvtToEfi"
                        text: "KVT → EFI"
                        onClicked: root.appState.convertOp("kvt2efi", "")
                    }

                    ConversionButton {
                        objectName: "convertCtzToKvt"
                        text: "CTZ → KVT"
                        onClicked: root.pickInput("ctz2kvt")
                    }
                }

                Item {
                    Layout.fillHeight: true
                }
            }
        }

        IdentifiersPanel {
            Layout.preferredWidth: 400
            Layout.maximumWidth: 460
            Layout.fillHeight: true
        }
    }

    component ConversionGrid: GridLayout {
        columns: 2
        rowSpacing: 12
        columnSpacing: 12
    }

    component ConversionButton: VOXButton {
        Layout.preferredWidth: 1
    }
}
