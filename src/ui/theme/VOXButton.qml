import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import KvtEditor

// A push button; `orange` marks the primary action of a view, `hint` names the key that does the same.
Button {
    id: root

    property bool orange: false
    property string hint
    // Whether a double click counts as two clicks. Off by default, so that nothing is bought, sent or opened twice,
    // even if the service answers in between.
    property bool actsTwice: false

    Layout.fillWidth: true
    Layout.preferredHeight: 40
    hoverEnabled: true
    font.pixelSize: 13
    font.weight: Font.DemiBold

    Accessible.role: Accessible.Button
    Accessible.name: root.text
    Accessible.description: root.hint

    // Ignores auto-repeat.
    Keys.onPressed: event => event.accepted = event.isAutoRepeat && event.key === Qt.Key_Space
    Keys.onReleased: event => event.accepted = event.isAutoRepeat && event.key === Qt.Key_Space
    // Return and Enter press it, too.
    function pressBy(event: var): void {
        event.accepted = (event.modifiers & ~Qt.KeypadModifier) === Qt.NoModifier;
        if (event.accepted && !event.isAutoRepeat)
            clicked();
    }

    Keys.onReturnPressed: event => pressBy(event)
    Keys.onEnterPressed: event => pressBy(event)

    onDoubleClicked: {
        if (actsTwice)
            root.clicked();
    }

    contentItem: Text {
        text: root.text
        textFormat: Text.PlainText
        font: root.font
        color: root.orange ? VOXTheme.accentText : VOXTheme.text
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
    }

    background: ButtonFace {
        implicitHeight: 38
        button: root
        edge: root.checked ? 1 : 0
        color: root.orange ? VOXTheme.orange : VOXTheme.buttonFill
        opacity: !root.enabled ? 0.45 : root.down ? 0.85 : 1
    }

    VOXHint {
        control: root
        text: root.hint
        wanted: (root.hovered || root.visualFocus) && !root.down
    }
}
