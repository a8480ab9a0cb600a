pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Dialogs.quickimpl as Dialogs
import KvtEditor

// The bar of folders in Qt's own file dialogs, whose buttons would take a folder's name for markup.
Dialogs.FolderBreadcrumbBar {
    id: root

    readonly property url place: (dialog as Dialogs.FileDialogImpl)?.selectedFile
        ?? (dialog as Dialogs.FolderDialogImpl)?.currentFolder ?? ""

    implicitHeight: contentItem.implicitHeight + topPadding + bottomPadding
    padding: 1
    upButtonSpacing: 20

    background: Rectangle {
        color: VOXTheme.input
        border.color: VOXTheme.border
    }

    contentItem: ListView {
        implicitHeight: 40
        currentIndex: root.currentIndex
        model: root.contentModel
        orientation: ListView.Horizontal
        snapMode: ListView.SnapToItem
        highlightMoveDuration: 0
        interactive: false
        clip: true
    }

    buttonDelegate: Button {
        id: button

        required property int index
        required property string folderName

        text: folderName
        flat: true
        implicitWidth: Math.min(implicitContentWidth + 16, 300)
        implicitHeight: 40
        Accessible.name: folderName

        contentItem: Text {
            text: button.folderName
            textFormat: Text.PlainText
            font: button.font
            color: VOXTheme.text
            elide: Text.ElideMiddle
            maximumLineCount: 1
            horizontalAlignment: Text.AlignHCenter
            verticalAlignment: Text.AlignVCenter
            Accessible.ignored: true
        }
    }

    separatorDelegate: Text {
        height: root.contentItem.height
        text: "›"
        textFormat: Text.PlainText
        color: VOXTheme.muted
        verticalAlignment: Text.AlignVCenter
        Accessible.ignored: true
    }

    upButton: ToolButton {
        x: root.leftPadding
        y: root.topPadding
        width: height
        focusPolicy: Qt.TabFocus
        icon.source: "qrc:/qt-project.org/imports/QtQuick/Dialogs/quickimpl/images/up-icon-round.png"
        icon.width: 16
        icon.height: 16
        Accessible.name: "Parent folder"
    }

    textField: TextField {
        text: root.place
        Accessible.name: "Path"
    }
}
