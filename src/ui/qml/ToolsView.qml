import QtQuick
import QtQuick.Layouts
import KvtEditor

// The tools, the options of the conversions among them, and the decoder of fault codes.
Item {
    id: root

    readonly property AppState appState: app // qmllint disable unqualified
    readonly property var xcalModes: ["kvt", "efi", "bench", "flat", "allseg"]
    // What the file that is being picked is for.
    property string conversion

    function pickInput(kind: string): void {
        conversion = kind;
        convertDialog.ask();
    }

    objectName: "toolsView"

    PickFileDialog {
        id: convertDialog
        objectName: "toolConvertDialog"
        title: "Open Calibration"
        nameFilters: ["Calibration (*.vbf *.xcal *.hex *.phf *.ecfg *)"]
        onTaken: path => root.appState.toolConvert(root.conversion, path)
    }

    VinHexPopup {
        id: vinHexPopup
        objectName: "vinHexPopup"
    }

    RowLayout {
        anchors { fill: parent; margins: 20 }
        spacing: 16

        VOXCard {
            title: "Workspace"
            Layout.fillHeight: true

            // So close that the smallest window shows all of it.
            VOXScroll {
                spacing: 6

                ToolTiles {
                    Layout.fillWidth: true
                    onConversionWanted: kind => root.pickInput(kind)
                    onVinHexWanted: vinHexPopup.open()
                }

                RowLayout {
                    spacing: 10
                    enabled: !root.appState.busy

                    VOXLabel {
                        text: "XCAL layout:"
                        Accessible.ignored: true
                    }

                    VOXComboBox {
                        objectName: "xcalLayoutBox"
                        model: root.xcalModes
                        currentIndex: root.xcalModes.indexOf(root.appState.xcalMode)
                        onActivated: index => root.appState.xcalMode = root.xcalModes[index]
                        Accessible.name: "XCAL layout"
                    }

                    VOXCheckBox {
                        objectName: "vbfSkipVerifyBox"
                        text: "VBF skip verification blocks"
                        checked: root.appState.vbfSkipVerify
                        onToggled: checked => root.appState.vbfSkipVerify = checked
                        Layout.leftMargin: 8
                    }
                }

                Item {
                    Layout.fillHeight: true
                }
            }
        }

        DtcPanel {
            Layout.preferredWidth: 400
            Layout.maximumWidth: 460
            Layout.fillHeight: true
        }
    }
}
