import QtQuick
import QtQuick.Dialogs
import QtQuick.Layouts
import KvtEditor

// Copies chosen tune files into a tree of folders, one level for each sort key.
Item {
    id: root

    readonly property AppState appState: app // qmllint disable unqualified
    property var files: []
    property string folder
    // From the click until the copies are made.
    property bool sorting: false

    function forget(): void {
        files = [];
        folder = "";
    }

    // Copying blocks the window, so that it must be seen to work before.
    function start(): void {
        sorting = true;
        frameWait.start();
    }

    objectName: "sorterView"

    PickFileDialog {
        id: filesDialog
        objectName: "sorterFilesDialog"
        title: "Source Files"
        fileMode: FileDialog.OpenFiles
        nameFilters: ["KVT (*.kvt)"]
        stays: root.files.length > 0
        onTaken: (path, paths) => root.files = paths
    }

    PickFolderDialog {
        id: folderDialog
        objectName: "sorterFolderDialog"
        title: "Output Folder"
        stays: root.folder !== ""
        onTaken: path => root.folder = path
    }

    FrameWait {
        id: frameWait
        onDrawn: {
            root.appState.sortCopy(root.files, root.folder, orderField.text);
            waitingClicks.start();
        }
    }

    // Clicks made while the window was blocked arrive now; they must not start over.
    Timer {
        id: waitingClicks
        interval: 50
        onTriggered: root.sorting = false
    }

    RowLayout {
        anchors { fill: parent; margins: 20 }
        spacing: 16
        enabled: !root.sorting

        SideCard {
            view: root
            title: "Sorter Options"

            VOXScroll {
                RowLayout {
                    spacing: 10

                    DropField {
                        id: filesField
                        objectName: "sorterFilesField"
                        title: "Source files"
                        text: root.files.length > 0 ? root.files.length + " file(s)" : ""
                        several: true
                        onTaken: paths => root.files = paths
                        Layout.fillWidth: true
                    }

                    VOXButton {
                        objectName: "sorterBrowseFilesButton"
                        text: "Browse..."
                        Layout.fillWidth: false
                        Layout.preferredWidth: 100
                        Layout.preferredHeight: filesField.input.height
                        Layout.alignment: Qt.AlignBottom
                        Accessible.name: "Browse source files"
                        onClicked: filesDialog.ask()
                    }
                }

                RowLayout {
                    spacing: 10

                    VOXTextField {
                        id: folderField
                        objectName: "sorterFolderField"
                        title: "Output Folder"
                        text: root.folder
                        locked: true
                    }

                    VOXButton {
                        objectName: "sorterBrowseFolderButton"
                        text: "Browse..."
                        Layout.fillWidth: false
                        Layout.preferredWidth: 100
                        Layout.preferredHeight: folderField.input.height
                        Layout.alignment: Qt.AlignBottom
                        Accessible.name: "Browse output folder"
                        onClicked: folderDialog.ask()
                    }
                }

                VOXTextField {
                    id: orderField
                    objectName: "sorterOrderField"
                    title: "Sort by / Then"
                    text: "Year,Make,OS"
                }

                VOXCheckBox {
                    objectName: "sorterSubfoldersBox"
                    text: "Include subfolders"
                    checked: true
                }

                RowLayout {
                    spacing: 10

                    VOXButton {
                        objectName: "sorterStartButton"
                        text: root.sorting ? "SORTING..." : "START SORT"
                        orange: true
                        Layout.preferredWidth: 140
                        onClicked: root.start()
                    }

                    VOXButton {
                        objectName: "sorterCancelButton"
                        text: "CANCEL"
                        Layout.preferredWidth: 140
                        onClicked: root.forget()
                    }
                }

                Item {
                    Layout.fillHeight: true
                }
            }
        }

        SorterResults {
            files: root.files
            folder: root.folder
            Layout.fillHeight: true
        }
    }

    MouseArea {
        objectName: "sorterWaitArea"
        anchors.fill: parent
        visible: root.sorting
        hoverEnabled: true
        acceptedButtons: Qt.AllButtons
        cursorShape: Qt.WaitCursor
        onWheel: wheel => wheel.accepted = true
    }
}
