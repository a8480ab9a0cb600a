import QtQuick
import QtQuick.Layouts
import KvtEditor

// Characters to hex digits and back, for a VIN that is to be typed into a hex editor.
VOXPopup {
    id: root

    width: 480
    onOpened: vinText.input.forceActiveFocus(Qt.TabFocusReason)

    ColumnLayout {
        width: root.availableWidth
        spacing: 12

        Accessible.role: Accessible.Dialog
        Accessible.name: "VIN2HEX / ASCII"

        VOXLabel {
            text: "VIN2HEX / ASCII"
            color: VOXTheme.orange
            font { pixelSize: 16; bold: true }
            Layout.fillWidth: true
            Accessible.role: Accessible.Heading
        }

        VOXTextField {
            id: vinText
            objectName: "vinTextField"
            title: "Text / VIN"
            unlimitedLength: true
        }

        VOXTextField {
            objectName: "vinHexField"
            title: "Hex bytes"
            unlimitedLength: true
            text: VinHex.hexOf(vinText.text)
            locked: true
        }

        VOXTextField {
            id: hexIn
            objectName: "hexInField"
            title: "Hex in"
            unlimitedLength: true
        }

        VOXTextField {
            objectName: "asciiOutField"
            title: "ASCII out"
            unlimitedLength: true
            text: VinHex.asciiOf(hexIn.text)
            locked: true
        }

        VOXButton {
            objectName: "vinHexCloseButton"
            text: "Close"
            Layout.topMargin: 4
            onClicked: root.close()
        }
    }
}
