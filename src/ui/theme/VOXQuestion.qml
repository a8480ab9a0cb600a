import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import KvtEditor

// Asks for a yes or a no in the middle of the window. Esc means no; closed from elsewhere, it tells nothing.
VOXPopup {
    id: root

    property string question
    property string explanation

    signal answered(bool yes)

    function answer(yes: bool): void {
        close();
        answered(yes);
    }

    width: 440
    closePolicy: Popup.NoAutoClose
    onOpened: noButton.forceActiveFocus(Qt.TabFocusReason)

    ColumnLayout {
        width: root.availableWidth
        spacing: 12

        Keys.onEscapePressed: root.answer(false)
        Accessible.role: Accessible.AlertMessage
        Accessible.name: root.question

        VOXLabel {
            objectName: "questionText"
            text: root.question
            muted: false
            font.pixelSize: 14
            wrapMode: Text.Wrap
            maximumLineCount: 6
            elide: Text.ElideRight
            Layout.fillWidth: true
        }

        VOXLabel {
            text: root.explanation
            wrapMode: Text.Wrap
            Layout.fillWidth: true
        }

        RowLayout {
            spacing: 10
            Layout.topMargin: 4

            VOXButton {
                text: "Yes"
                onClicked: root.answer(true)
            }

            VOXButton {
                id: noButton
                text: "No"
                onClicked: root.answer(false)
            }
        }
    }
}
