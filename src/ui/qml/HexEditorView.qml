pragma ComponentBehavior: Bound

import QtQml
import QtQuick
import QtQuick.Layouts
import KvtEditor

// The hex editor over the whole window: search, the file's rows, and a patch at the cursor.
FocusScope {
    id: root

    readonly property AppState appState: app // qmllint disable unqualified
    readonly property HexEditing editing: appState.hexEditing()
    property bool inspecting: false
    // Whether the differences are listed, while there are any.
    property bool listing: false
    readonly property bool hasPanel: inspecting || listing && editing.compare.active
    // Beside the rows, where there is room for it.
    readonly property bool panelBeside: width - 40 - byteGrid.neededWidth >= 320

    signal closed()
    signal saveWanted()

    // What is typed then replaces what was searched for.
    function focusSearch(): void {
        searchField.forceActiveFocus(Qt.ShortcutFocusReason);
        searchField.selectAll();
    }

    function findNext(): void {
        appState.hexFind(searchField.text);
        showFound();
    }

    function findPrevious(): void {
        appState.hexFindPrevious(searchField.text);
        showFound();
    }

    function focusGoTo(): void {
        goToField.forceActiveFocus(Qt.ShortcutFocusReason);
        goToField.selectAll();
    }

    function fill(): void {
        editing.fill(patchField.text);
        noteApplied();
    }

    function xorSelection(): void {
        editing.xorWith(patchField.text);
        noteApplied();
    }

    function replaceAll(): void {
        editing.replaceAll(searchField.text, patchField.text);
        noteApplied();
    }

    function applyPatch(): void {
        appState.hexPatch(patchField.text);
        noteApplied();
    }

    function noteApplied(): void {
        if (appState.statusOK === 1)
            patchField.applied = patchField.text;
    }

    function close(): void {
        patchField.pointAt();
        appState.showHex = false;
    }

    function goTo(): void {
        if (!appState.hexGoTo(goToField.text))
            return;
        rows.showInTheMiddle(appState.hexModel.currentRow);
        rows.forceActiveFocus(Qt.OtherFocusReason);
    }

    // A match at the cursor moves nothing, and may have been scrolled away.
    function showFound(): void {
        if (appState.hexModel.matchLength > 0)
            rows.showInTheMiddle(appState.hexModel.currentRow);
    }

    objectName: "hexOverlay"
    visible: appState.showHex
    onVisibleChanged: {
        if (visible)
            searchField.forceActiveFocus();
        else
            closed();
    }
    // Made only now to be shown at once, it was never hidden.
    Component.onCompleted: {
        if (visible)
            searchField.forceActiveFocus();
    }
    Keys.onEscapePressed: close()

    // What was applied to another file was not applied to this one.
    Connections {
        target: root.appState.hexModel
        function onModelReset(): void {
            patchField.applied = "";
        }
    }

    Accessible.role: Accessible.Dialog
    Accessible.name: "Hex Editor"

    Rectangle {
        anchors.fill: parent
        color: VOXTheme.veil
    }

    // Keeps the mouse from what lies behind.
    MouseArea {
        anchors.fill: parent
        acceptedButtons: Qt.AllButtons
        hoverEnabled: true
        onWheel: wheel => wheel.accepted = true
    }

    HexGrid {
        id: byteGrid
        rowWidth: rows.width
        comparing: root.editing.compare.active
    }

    HexCommands {
        id: commands
        onFillWanted: root.fill()
        onXorWanted: root.xorSelection()
        onReplaceWanted: root.replaceAll()
        onFileWanted: {
            if (commands.hasFile)
                pasteDialog.ask();
            else
                root.appState.setStatus("No file is open.", 0);
        }
        onSelectionSaveWanted: {
            if (commands.hasSelection)
                selectionDialog.ask();
            else
                root.appState.setStatus("Select the bytes to save first.", 0);
        }
        onGoToWanted: root.focusGoTo()
        onFindNextWanted: root.findNext()
        onFindPreviousWanted: root.findPrevious()
        onInspectorWanted: root.inspecting = !root.inspecting
        onListWanted: {
            if (root.editing.compare.active)
                root.listing = !root.listing;
            else
                root.appState.setStatus("Compare with a file first.", 0);
        }
        onOtherWanted: {
            if (commands.hasFile)
                otherDialog.ask();
            else
                root.appState.setStatus("No file is open.", 0);
        }
    }

    PickFileDialog {
        id: otherDialog
        objectName: "hexOtherDialog"
        title: "Compare with"
        nameFilters: ["All files (*)", "KVT files (*.kvt)"]
        onTaken: path => root.editing.compare.start(path)
    }

    PickFileDialog {
        id: pasteDialog
        objectName: "hexPasteDialog"
        title: "Paste a file"
        nameFilters: ["All files (*)"]
        onTaken: path => root.editing.pasteFile(path)
    }

    SaveAs {
        id: selectionDialog
        dialog.objectName: "hexSelectionDialog"
        dialog.title: "Save the selection"
        dialog.nameFilters: ["All files (*)", "BIN (*.bin)"]
        dialog.offeredName: "selection.bin"
        suffix: ".bin"
        onTaken: path => root.appState.hexSaveSelection(path)
    }

    FileDrop {
        objectName: "hexDrop"
        anchors.fill: parent
        anyFile: true
        onTaken: paths => root.editing.compare.start(paths[0])
    }

    ColumnLayout {
        anchors { fill: parent; margins: 16 }
        spacing: 8

        RowLayout {
            spacing: 8

            VOXLabel {
                text: "Hex Editor"
                muted: false
                font { pixelSize: 18; bold: true }
                Accessible.role: Accessible.Heading
            }

            VOXLabel {
                objectName: "hexFileName"
                text: root.appState.fileName
                    + (root.editing.compare.active ? "  compared with  " + root.editing.compare.name : "")
                elide: Text.ElideMiddle
                maximumLineCount: 1
                Layout.fillWidth: true
                Layout.alignment: Qt.AlignBaseline
                Layout.leftMargin: 4
            }

            VOXButton {
                objectName: "hexCloseButton"
                text: "Close"
                hint: "Esc"
                implicitWidth: 90
                Layout.fillWidth: false
                onPressed: patchField.pointAt()
                onClicked: root.close()
            }
        }

        RowLayout {
            spacing: 8

            VOXField {
                id: searchField
                objectName: "hexSearchField"
                unlimitedLength: true
                hint: "Ctrl+F"
                placeholderText: "Hex or ASCII search"
                focus: true
                Layout.fillWidth: true
                rightPadding: matchLabel.visible ? matchLabel.width + 20 : 10
                onAccepted: root.findNext()
                onTextEdited: root.editing.matches.forget()

                VOXLabel {
                    id: matchLabel
                    objectName: "hexMatchText"
                    anchors { right: parent.right; rightMargin: 10; verticalCenter: parent.verticalCenter }
                    visible: text !== ""
                    text: root.editing.matches.text
                }
            }

            SearchButton {
                objectName: "hexFindButton"
                text: "Find"
            }

            SearchButton {
                objectName: "hexNextButton"
                text: "Next"
                hint: "F3"
            }

            SearchButton {
                objectName: "hexPreviousButton"
                implicitWidth: 90
                text: "Previous"
                hint: "Shift+F3"
                forwards: false
            }

            VOXField {
                id: goToField
                objectName: "hexGoToField"
                hint: "Ctrl+G"
                placeholderText: "Go to offset"
                Layout.preferredWidth: 150
                Layout.leftMargin: 8
                onAccepted: root.goTo()
                Keys.onDownPressed: {
                    if (targetsButton.enabled)
                        targetsButton.clicked();
                }
            }

            VOXButton {
                id: targetsButton
                objectName: "hexTargetsButton"
                text: "▾"
                enabled: targetsMenu.count > 0
                implicitWidth: 32
                Layout.fillWidth: false
                Accessible.name: "Bookmarks and recent offsets"
                onClicked: targetsMenu.popup(targetsButton, width - targetsMenu.width, height + 4)

                VOXMenu {
                    id: targetsMenu
                    objectName: "hexTargetsMenu"

                    Instantiator {
                        model: [...root.editing.bookmarks, ...root.editing.targets]
                        onObjectAdded: (index, object) => targetsMenu.insertItem(index, object)
                        onObjectRemoved: (index, object) => targetsMenu.removeItem(object)

                        VOXMenuItem {
                            required property string modelData
                            required property int index

                            text: modelData
                            keyText: index < root.editing.bookmarks.length ? "Bookmark" : ""
                            onTriggered: {
                                // Going there makes the entries anew, and this one could not close the menu.
                                targetsMenu.close();
                                goToField.text = modelData;
                                root.goTo();
                            }
                        }
                    }
                }
            }
        }

        HexTools {
            commands: commands
            inspecting: root.inspecting
            Layout.minimumWidth: 0
            onApplyWanted: root.applyPatch()
            onCloseWanted: root.close()
            onFindWanted: root.focusSearch()
            onSaveWanted: root.saveWanted()
        }

        HexInfoLine {
            Layout.fillWidth: true
        }

        // Placed by geometry: a layout does not move its items from below to beside.
        Item {
            id: body

            readonly property real panelHeight: 220
            readonly property bool split: root.hasPanel && root.panelBeside

            Layout.fillWidth: true
            Layout.fillHeight: true

            ColumnLayout {
                id: grid
                width: body.split ? byteGrid.neededWidth : body.width
                height: root.hasPanel && !root.panelBeside ? body.height - body.panelHeight - 8 : body.height
                spacing: 2

                HexRuler {
                    objectName: "hexRuler"
                    grid: byteGrid
                    cursorColumn: root.appState.hexModel.cursor % byteGrid.bytesPerRow
                    Layout.fillWidth: true
                }

                HexRows {
                    id: rows
                    objectName: "hexRows"
                    hexModel: root.appState.hexModel
                    editing: root.editing
                    grid: byteGrid
                    Layout.fillWidth: true
                    Layout.fillHeight: true
                }
            }

            HexPanel {
                objectName: "hexPanel"
                visible: root.hasPanel
                inspecting: root.inspecting
                listing: root.listing && root.editing.compare.active
                low: !root.panelBeside
                onKeyboardLost: rows.forceActiveFocus(Qt.OtherFocusReason)
                x: body.split ? grid.width + 8 : 0
                y: body.split ? 0 : grid.height + 8
                width: body.width - x
                height: body.height - y
            }
        }

        RowLayout {
            spacing: 8

            VOXField {
                id: patchField

                // What was typed when a patch was last applied, and whether anything else is pointed at.
                property string applied
                property bool pointedAt: false
                readonly property bool unapplied: text.trim() !== "" && text !== applied

                function pointAt(): void {
                    pointedAt = unapplied;
                }

                objectName: "hexPatchField"
                unlimitedLength: true
                placeholderText: "Patch hex at cursor (e.g. FF 00)"
                rightPadding: unappliedLabel.visible ? unappliedLabel.width + 20 : 10
                Layout.fillWidth: true
                onAccepted: root.applyPatch()
                onUnappliedChanged: pointedAt = false

                VOXLabel {
                    id: unappliedLabel
                    objectName: "hexUnapplied"
                    anchors { right: parent.right; rightMargin: 10; verticalCenter: parent.verticalCenter }
                    visible: patchField.pointedAt
                    text: "Not applied"
                    color: VOXTheme.orangeBright
                }
            }

            VOXButton {
                objectName: "hexApplyButton"
                text: "Apply"
                implicitWidth: 90
                Layout.fillWidth: false
                onClicked: root.applyPatch()
            }

            VOXButton {
                objectName: "hexFillButton"
                text: "Fill"
                hint: commands.fill.nativeText
                enabled: commands.fill.sensible
                implicitWidth: 80
                Layout.fillWidth: false
                onClicked: root.fill()
            }

            VOXButton {
                objectName: "hexWriteBackButton"
                text: "Write into open KVT"
                implicitWidth: 180
                Layout.fillWidth: false
                onPressed: patchField.pointAt()
                onClicked: {
                    patchField.pointAt();
                    root.appState.hexWriteBack();
                }
            }
        }
    }

    // A click leaves the keyboard with the search field, where Return then finds the next.
    component SearchButton: VOXButton {
        property bool forwards: true

        implicitWidth: 80
        focusPolicy: Qt.TabFocus
        actsTwice: true
        Layout.fillWidth: false
        onClicked: {
            if (forwards)
                root.findNext();
            else
                root.findPrevious();
            if (!activeFocus)
                searchField.forceActiveFocus(Qt.OtherFocusReason);
        }
    }
}
