import QtQuick
import QtQuick.Layouts
import KvtEditor

// The workspace: the open tune file, what can be done with it, and its identifiers.
Item {
    id: root

    readonly property AppState appState: app // qmllint disable unqualified

    readonly property HexEditing editing: appState.hexEditing()
    // What has not been saved.
    readonly property string unsaved: editing.changesText
        + (editing.changesText !== "" && IdentifierEdits.made ? ". " : "")
        + (IdentifierEdits.made ? "Edited identifiers are not written into the file" : "")

    function showOpenDialog(): void {
        openDialog.ask();
    }

    function showSaveDialog(): void {
        saveDialog.ask();
    }

    function showHexEditor(): void {
        if (appState.fileName === "")
            appState.setStatus("Open an KVT first.", 0);
        else
            appState.showHex = true;
    }

    // Another file can open by itself, as a result of the service. Saved under the name that the dialog offers,
    // it would take the earlier file's place.
    Connections {
        target: root.appState
        function onFileChanged(): void {
            saveDialog.close();
        }
    }

    // Only another file has identifiers of its own: saving does not write them.
    Connections {
        target: root.appState.hexModel
        function onModelReset(): void {
            IdentifierEdits.begin();
        }
    }

    PickFileDialog {
        id: openDialog
        objectName: "openDialog"
        title: "Open KVT"
        nameFilters: ["KVT files (*.kvt)", "All files (*)"]
        onTaken: path => root.appState.openKvt(path)
    }

    SaveAs {
        id: saveDialog
        dialog.objectName: "saveDialog"
        dialog.title: "Save KVT"
        dialog.nameFilters: ["KVT files (*.kvt)"]
        dialog.offeredName: root.appState.fileName
        suffix: ".kvt"
        onTaken: path => root.appState.saveKvt(path)
    }

    // In the field of the file's name.
    VOXLabel {
        objectName: "unsavedMark"
        parent: fileNameField.input
        anchors { right: parent.right; rightMargin: 12; verticalCenter: parent.verticalCenter }
        visible: root.appState.fileName !== "" && root.unsaved !== ""
        text: root.editing.changedBytes > 0 ? "● Not saved" : "● Edited"
        color: VOXTheme.orangeBright
        Accessible.description: root.unsaved

        Rectangle {
            anchors { fill: parent; margins: -4 }
            z: -1
            color: VOXTheme.input
        }

        HoverHandler {
            id: unsavedHover
        }

        VOXToolTip {
            objectName: "unsavedToolTip"
            visible: unsavedHover.hovered
            fullText: root.unsaved
        }
    }

    RowLayout {
        anchors { fill: parent; margins: 20 }
        spacing: 16

        VOXCard {
            title: "Workspace"
            Layout.fillHeight: true

            VOXScroll {
                ReadOnlyField {
                    id: fileNameField
                    objectName: "fileNameField"
                    title: "Filename"
                    value: root.appState.fileName
                }

                ReadOnlyField {
                    objectName: "createdField"
                    title: "Created"
                    value: root.appState.created
                }

                ReadOnlyField {
                    objectName: "versionField"
                    title: "Version"
                    value: root.appState.editorVersion
                }

                RowLayout {
                    spacing: 10

                    VOXButton {
                        objectName: "openFileButton"
                        Layout.preferredWidth: 120
                        text: "Open File"
                        hint: "Ctrl+O"
                        onClicked: root.showOpenDialog()
                    }

                    VOXButton {
                        objectName: "hexEditorButton"
                        Layout.preferredWidth: 120
                        text: "Hex Editor"
                        hint: "Ctrl+H"
                        onClicked: root.showHexEditor()
                    }
                }

                VOXButton {
                    objectName: "saveFileButton"
                    text: "SAVE FILE"
                    hint: "Ctrl+S"
                    orange: true
                    onClicked: root.showSaveDialog()
                }

                VOXTextField {
                    id: emailField
                    objectName: "devEmailField"
                    title: "Dev / feedback email"
                }

                VOXTextField {
                    id: messageField
                    objectName: "devMessageField"
                    title: "Message for dev team"
                    unlimitedLength: true
                }

                VOXButton {
                    objectName: "sendToDevButton"
                    text: "Send to Dev"
                    onClicked: root.appState.sendToDev(emailField.text, messageField.text)
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
}
