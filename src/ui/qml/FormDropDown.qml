import QtQuick.Layouts
import KvtEditor

// A drop-down among the fields of a form, as wide as they are. A text before the entry tells what it chooses
// where no caption does.
VOXComboBox {
    property string prefix

    displayText: prefix + currentText
    implicitHeight: 40
    Layout.fillWidth: true
}
