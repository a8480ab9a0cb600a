pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls.Basic
import KvtEditor

// The bare line of input inside every captioned field, and alone where a placeholder says enough. `hint` names the
// key that leads there. With `unlimitedLength`, pasted text is kept whole; otherwise it is silently truncated.
TextField {
    id: root

    property color ringColor: VOXTheme.orangeBright
    property string hint
    property bool unlimitedLength: false

    maximumLength: unlimitedLength ? 2147483647 : 32767

    color: enabled ? VOXTheme.text : VOXTheme.disabledText
    selectionColor: VOXTheme.orange
    selectedTextColor: VOXTheme.accentText
    placeholderTextColor: VOXTheme.muted
    selectByMouse: true
    hoverEnabled: true
    padding: 10
    leftPadding: 10
    font.pixelSize: 13

    Accessible.role: Accessible.EditableText
    Accessible.name: placeholderText
    Accessible.readOnly: readOnly
    Accessible.passwordEdit: echoMode === TextInput.Password

    background: Rectangle {
        color: VOXTheme.input
        radius: VOXTheme.radiusControl
        border.width: root.activeFocus ? 2 : 1
        border.color: root.activeFocus ? root.ringColor : VOXTheme.border
    }

    // A long text that arrives from elsewhere shows its beginning.
    onTextChanged: {
        if (!activeFocus)
            cursorPosition = 0;
    }

    VOXHint {
        control: root
        text: root.hint
        wanted: root.hovered && !root.activeFocus
    }
}
