pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import KvtEditor

// The hex editor over the whole window: search, the file's rows, and a patch at the cursor.
FocusScope {
    id: root

    readonly property AppState appState: app // qmllint disable unqualified

    signal closed()

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
    Keys.onEscapePressed: appState.showHex = false

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
                onClicked: root.appState.showHex = false
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
                onAccepted: root.findNext()
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
            }
        }

        HexInfoLine {
            Layout.fillWidth: true
        }

        ColumnLayout {
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
                grid: byteGrid
                Layout.fillWidth: true
                Layout.fillHeight: true
            }
        }

        RowLayout {
            spacing: 8

            VOXField {
                id: patchField
                objectName: "hexPatchField"
                unlimitedLength: true
                placeholderText: "Patch hex at cursor (e.g. FF 00)"
                Layout.fillWidth: true
            }

            VOXButton {
                objectName: "hexApplyButton"
                text: "Apply"
                implicitWidth: 90
                Layout.fillWidth: false
                onClicked: root.appState.hexPatch(patchField.text)
            }

            VOXButton {
                objectName: "hexWriteBackButton"
                text: "Write into open KVT"
                implicitWidth: 180
                Layout.fillWidth: false
                onClicked: root.appState.hexWriteBack()
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
