import QtQuick
import QtQuick.Dialogs
import QtQuick.Layouts
import KvtEditor

// The workspace: the open tune file, what can be done with it, and its identifiers.
Item {
    id: root

    readonly property AppState appState: app // qmllint disable unqualified

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

    PickFileDialog {
        id: openDialog
        objectName: "openDialog"
        title: "Open KVT"
        nameFilters: ["KVT files (*.kvt)", "All files (*)"]
        onTaken: path => root.appState.openKvt(path)
    }

    PickFileDialog {
        id: saveDialog
        objectName: "saveDialog"
        title: "Save KVT"
        fileMode: FileDialog.SaveFile
        nameFilters: ["KVT files (*.kvt)"]
        acceptLabel: "Save"
        offeredName: root.appState.fileName
        onTaken: path => root.appState.saveKvt(path)
    }

    RowLayout {
        anchors { fill: parent; margins: 20 }
        spacing: 16

        VOXCard {
            title: "Workspace"
            Layout.fillHeight: true

            VOXScroll {
                ReadOnlyField {
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
