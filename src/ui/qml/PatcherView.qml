pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import KvtEditor

// Patches of the store for a calibration: lists them, and has one applied to a BIN file.
Item {
    id: root

    readonly property AppState appState: app // qmllint disable unqualified
    readonly property VOXField searchField: calIdField.input
    // The patch that the file is being picked for.
    property int pendingIndex: -1

    function pickBin(index: int): void {
        pendingIndex = index;
        binDialog.ask();
    }

    // The number of a patch means nothing in another list, where it might stand for a dearer one.
    function forgetPick(): void {
        pendingIndex = -1;
        binDialog.dismiss();
    }

    // A key that is held asks once.
    function load(event: var): void {
        if (!event.isAutoRepeat)
            appState.loadPatches(calIdField.text);
    }

    objectName: "patcherView"

    PickFileDialog {
        id: binDialog
        objectName: "patcherDialog"
        title: "Open BIN"
        nameFilters: ["BIN (*.bin)"]
        onTaken: path => root.appState.applyPatchToBin(root.pendingIndex, path)
    }

    RowLayout {
        anchors { fill: parent; margins: 20 }
        spacing: 16

        SideCard {
            objectName: "patcherWorkspace"
            view: root

            VOXScroll {
                VOXLabel {
                    objectName: "patcherHint"
                    text: "Credit-based BIN patches use the XDF store session. "
                        + "Complete XDF MAKER login first."
                    wrapMode: Text.Wrap
                    font.pixelSize: 13
                    Layout.fillWidth: true
                }

                // Follows the open file until the user writes something else.
                VOXTextField {
                    id: calIdField

                    property bool own: false
                    property string typed

                    objectName: "patcherCalIdField"
                    hint: "Ctrl+F"
                    title: "Cal / OS ID (module 1)"
                    text: own ? typed : root.appState.moduleOneOS
                    onEdited: value => {
                        typed = value;
                        own = true;
                    }
                    Keys.onReturnPressed: event => root.load(event)
                    Keys.onEnterPressed: event => root.load(event)
                }

                RowLayout {
                    spacing: 10

                    VOXButton {
                        objectName: "patcherLoadButton"
                        text: "Load patches"
                        orange: true
                        Layout.preferredWidth: 120
                        Layout.minimumWidth: implicitWidth
                        onClicked: root.appState.loadPatches(calIdField.text)
                    }

                    VOXButton {
                        objectName: "patcherOpenXdfButton"
                        text: "Open XDF MAKER"
                        Layout.preferredWidth: 160
                        Layout.minimumWidth: implicitWidth
                        onClicked: root.appState.tab = "xdf"
                    }
                }

                Item {
                    Layout.fillHeight: true
                }
            }
        }

        VOXCard {
            objectName: "patcherListCard"
            title: "Identifiers"
            Layout.fillHeight: true

            VOXList {
                id: patches
                objectName: "patcherList"
                name: "Patches"
                model: RowModel {
                    rows: root.appState.patchItems
                    resetting: true
                    // Announced after the list has handled the reset.
                    onRowsChanged: {
                        root.forgetPick();
                        patches.currentIndex = -1;
                        patches.positionViewAtBeginning();
                    }
                }
                onChosen: row => {
                    if (row >= 0)
                        root.pickBin(row);
                }
                Layout.fillWidth: true
                Layout.fillHeight: true

                delegate: OfferRow {
                    required property var row

                    objectName: "patch" + index
                    title: row.variant
                    about: row.description
                    credits: row.credits
                    wrapping: true
                    action: "Apply to BIN"
                    actionWidth: 130
                    onWanted: root.pickBin(index)
                }

                VOXLabel {
                    objectName: "patcherEmptyLine"
                    parent: patches
                    x: 10
                    y: 10
                    width: parent.width - 20
                    visible: patches.count === 0
                    text: "Patches for the current OS appear here."
                    wrapMode: Text.Wrap
                }
            }
        }
    }
}
