import QtQuick
import QtQuick.Layouts
import KvtEditor

// Looks for tune files in a folder; a click on a hit opens it in the workspace.
Item {
    id: root

    readonly property AppState appState: app // qmllint disable unqualified
    property string folder
    readonly property VOXField searchField: nameField.input

    function search(): void {
        if (folder === "")
            folderDialog.ask();
        else
            scan();
    }

    function scan(): void {
        appState.scanFolder(folder, recursiveBox.checked, nameField.text, osField.text,
            makeField.text, yearField.text);
    }

    function takeFolder(path: string): void {
        folder = path;
        scan();
    }

    objectName: "searchView"

    PickFolderDialog {
        id: folderDialog
        objectName: "searchFolderDialog"
        title: "Search Folder"
        stays: root.folder !== ""
        onTaken: path => root.takeFolder(path)
    }

    RowLayout {
        anchors { fill: parent; margins: 20 }
        spacing: 16

        SideCard {
            view: root

            VOXScroll {
                RowLayout {
                    spacing: 10

                    DropField {
                        id: folderField
                        objectName: "searchFolderField"
                        title: "Search Folder"
                        text: root.folder
                        folder: true
                        onTaken: paths => root.takeFolder(paths[0])
                        Layout.fillWidth: true
                    }

                    VOXButton {
                        objectName: "searchBrowseButton"
                        text: "Browse..."
                        Layout.fillWidth: false
                        Layout.preferredWidth: 100
                        Layout.preferredHeight: folderField.input.height
                        Layout.alignment: Qt.AlignBottom
                        onClicked: folderDialog.ask()
                    }
                }

                VOXCheckBox {
                    id: recursiveBox
                    objectName: "searchRecursiveBox"
                    text: "Include subfolders"
                    checked: root.appState.searchRecursive !== "0"
                    onToggled: checked => root.appState.searchRecursive = checked ? "1" : "0"
                }

                ColumnLayout {
                    spacing: 10
                    Layout.fillWidth: true
                    Keys.onReturnPressed: event => event.isAutoRepeat || root.search()
                    Keys.onEnterPressed: event => event.isAutoRepeat || root.search()

                    VOXTextField {
                        id: nameField
                        objectName: "searchNameField"
                        hint: "Ctrl+F"
                        title: "Name"
                    }

                    VOXTextField {
                        id: osField
                        objectName: "searchOsField"
                        title: "OS"
                    }

                    VOXTextField {
                        id: makeField
                        objectName: "searchMakeField"
                        title: "Make"
                    }

                    VOXTextField {
                        id: yearField
                        objectName: "searchYearField"
                        title: "Year"
                    }
                }

                RowLayout {
                    spacing: 10

                    VOXButton {
                        objectName: "searchButton"
                        text: root.appState.searchBusy ? "SEARCHING..." : "SEARCH"
                        orange: true
                        enabled: !root.appState.searchBusy
                        Layout.preferredWidth: 160
                        Layout.minimumWidth: implicitWidth
                        onClicked: root.search()
                    }

                    VOXButton {
                        objectName: "searchCancelButton"
                        text: "CANCEL"
                        enabled: root.appState.searchBusy
                        Layout.preferredWidth: 80
                        Layout.minimumWidth: implicitWidth
                        onClicked: root.appState.cancelScan()
                    }

                    VOXButton {
                        objectName: "searchClearButton"
                        text: "CLEAR"
                        Layout.preferredWidth: 80
                        Layout.minimumWidth: implicitWidth
                        onClicked: root.appState.clearSearch()
                    }
                }

                Item {
                    Layout.fillHeight: true
                }
            }
        }

        SearchResults {
            Layout.fillHeight: true
        }
    }
}
