import QtQuick
import QtQuick.Layouts
import KvtEditor

// Swaps segments of a donor file into a base file: lists what can be swapped, then swaps what is ticked.
Item {
    id: root

    readonly property AppState appState: app // qmllint disable unqualified
    property string baseName
    property string donorName
    // Which of the two is being picked.
    property string which

    function pick(file: string): void {
        which = file;
        fileDialog.ask();
    }

    function take(file: string, path: string): void {
        const name = path.split("/").pop();
        if (file === "base")
            baseName = name;
        else
            donorName = name;
        appState.pickSegmentFile(file, path);
    }

    objectName: "segmentsView"

    PickFileDialog {
        id: fileDialog
        objectName: "segmentFileDialog"
        title: "Pick " + root.which + " .kvt"
        nameFilters: ["KVT (*.kvt)"]
        onTaken: path => root.take(root.which, path)
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
                objectName: "segmentsScroll"

                FileFields {
                    dense: root.height < 700
                }

                VOXLabel {
                    objectName: "segmentsNote"
                    text: "If you do not pick a base file, the KVT open on MAIN is used."
                    wrapMode: Text.Wrap
                    Layout.fillWidth: true
                }

                GridLayout {
                    columns: 2
                    rowSpacing: 4
                    columnSpacing: 10

                    VOXButton {
                        objectName: "pickBaseButton"
                        text: "Pick base .kvt"
                        Layout.preferredWidth: 1
                        onClicked: root.pick("base")

                        FileDrop {
                            anchors.fill: parent
                            onTaken: paths => root.take("base", paths[0])
                        }
                    }

                    VOXButton {
                        objectName: "pickDonorButton"
                        text: "Pick donor .kvt"
                        Layout.preferredWidth: 1
                        onClicked: root.pick("donor")

                        FileDrop {
                            anchors.fill: parent
                            onTaken: paths => root.take("donor", paths[0])
                        }
                    }

                    PickedFile {
                        objectName: "pickedBase"
                        text: root.baseName !== "" ? "Base: " + root.baseName
                            : root.appState.fileName !== "" ? "Base: the KVT open on MAIN" : "Base: none yet"
                    }

                    PickedFile {
                        objectName: "pickedDonor"
                        text: root.donorName !== "" ? "Donor: " + root.donorName : "Donor: none yet"
                    }
                }

                VOXButton {
                    objectName: "segmentSwapButton"
                    text: "SEGMENT SWAP"
                    orange: true
                    onClicked: root.appState.previewSegments()
                }

                RowLayout {
                    spacing: 10

                    VOXButton {
                        objectName: "applySelectedButton"
                        text: "Apply selected"
                        orange: true
                        enabled: !root.appState.busy
                        Layout.preferredWidth: 1
                        onClicked: root.appState.applySegments()
                    }

                    VOXCheckBox {
                        objectName: "selectAllBox"
                        text: "Select all"
                        checked: true
                        onToggled: checked => root.appState.selectAllCandidates(checked)
                        Layout.preferredWidth: 1
                    }
                }

                SwapCandidates {
                    objectName: "swapList"
                    emptyText: root.donorName === ""
                        ? "No swaps to choose from. Pick a donor, then press SEGMENT SWAP."
                        : "No swaps to choose from. SEGMENT SWAP compares base and donor."
                    Layout.fillWidth: true
                    Layout.fillHeight: true
                    Layout.minimumHeight: 140
                    Layout.preferredHeight: 140
                }
            }
        }

        IdentifiersPanel {
            Layout.preferredWidth: 400
            Layout.maximumWidth: 460
            Layout.fillHeight: true
        }
    }
}
