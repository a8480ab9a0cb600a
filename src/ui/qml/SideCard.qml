import QtQuick
import QtQuick.Layouts
import KvtEditor

// The card of controls at the left of a view.
VOXCard {
    required property Item view

    title: "Workspace"
    Layout.fillWidth: false
    Layout.preferredWidth: Math.max(330, Math.min(380, view.width * 0.32))
    Layout.fillHeight: true
}
