pragma ComponentBehavior: Bound

import QtQml
import QtQuick
import KvtEditor

// One value of the inspector. A click copies it, and a double click changes what can be changed, or a key while the
// keyboard is here.
Rectangle {
    id: root

    // What it is, and what it says; empty where there is no value.
    required property string label
    required property string value
    // Instead of no value.
    required property string missing
    // Which of the values at the cursor it is, or -1 for what cannot be changed.
    required property int valueRow
    property bool bigEndian: false
    property bool editing: false
    readonly property bool editable: valueRow >= 0 && value !== ""

    readonly property AppState appState: app // qmllint disable unqualified

    function copy(): void {
        if (value !== "")
            appState.copyText(value, label);
    }

    // What cannot be changed is copied.
    function edit(): void {
        if (editable)
            editing = true;
        else
            copy();
    }

    implicitHeight: Math.max(20, content.implicitHeight + 6)
    radius: 4
    color: value !== "" && pointer.containsMouse ? VOXTheme.accent(0.12) : "transparent"
    border.width: activeFocus ? 2 : 0
    border.color: VOXTheme.focusRing

    Accessible.role: Accessible.Cell
    Accessible.name: label + ", " + (value !== "" ? value : "no value")
    Accessible.focusable: true
    Accessible.onPressAction: edit()

    Text {
        id: content
        objectName: "content"
        anchors {
            left: parent.left
            right: parent.right
            margins: 4
            baseline: parent.top
            baselineOffset: 14
        }
        // The digits of a digest stand in two lines.
        text: root.value === "" ? root.missing : root.value.replace(/.{32}(?=.)/g, "$&\n")
        textFormat: Text.PlainText
        font { family: VOXTheme.fixedFamily; pixelSize: 12 }
        // Long numbers are set smaller before they are cut, which leaves the exponent in sight.
        fontSizeMode: Text.HorizontalFit
        minimumPixelSize: 10
        elide: Text.ElideMiddle
        color: root.value !== "" ? VOXTheme.text : VOXTheme.muted
        Accessible.ignored: true
    }

    MouseArea {
        id: pointer
        anchors.fill: parent
        hoverEnabled: true
        cursorShape: root.value !== "" ? Qt.PointingHandCursor : Qt.ArrowCursor
        // What may be the first of two clicks waits for the second: it would take the clipboard from who wants to
        // paste into the value.
        onClicked: {
            if (!root.editable)
                return root.copy();
            copying.text = root.value;
            copying.restart();
        }
        onDoubleClicked: {
            copying.stop();
            root.edit();
        }

        Timer {
            id: copying

            // As it was when it was clicked.
            property string text

            interval: Application.styleHints.mouseDoubleClickInterval
            onTriggered: root.appState.copyText(text, root.label)
        }
    }

    // What is typed belongs to the bytes for which it was begun.
    Connections {
        target: root.editing ? root.appState.hexModel : null
        function onCursorChanged(): void {
            root.forceActiveFocus(Qt.OtherFocusReason);
        }
    }

    Repeater {
        model: root.editing ? 1 : 0

        VOXField {
            id: field

            function apply(event: var): void {
                if (event.isAutoRepeat)
                    return;
                if (root.appState.hexEditing().writeValue(root.valueRow, text, root.bigEndian))
                    root.forceActiveFocus(Qt.OtherFocusReason);
            }

            objectName: "valueField"
            width: root.width
            height: root.height
            padding: 0
            leftPadding: 4
            font { family: VOXTheme.fixedFamily; pixelSize: 12 }
            Accessible.name: root.label
            Component.onCompleted: {
                text = root.value;
                forceActiveFocus(Qt.OtherFocusReason);
                selectAll();
            }
            onActiveFocusChanged: {
                // In another window the user may look up what to type.
                if (!activeFocus && Window.active)
                    root.editing = false;
            }
            Keys.onReturnPressed: event => apply(event)
            Keys.onEnterPressed: event => apply(event)
            // Not for the panel, in which they leave the cell.
            Keys.onUpPressed: {}
            Keys.onDownPressed: {}
            Keys.onEscapePressed: root.forceActiveFocus(Qt.OtherFocusReason)
        }
    }

    Instantiator {
        model: pointer.containsMouse && content.truncated ? 1 : 0

        VOXToolTip {
            objectName: "wholeValue"
            parent: root
            fullText: root.value
            visible: true
        }
    }
}
