import QtQuick
import QtQuick.Layouts
import KvtEditor

// A captioned line of text. `edited` tells of the user's typing only, so that `text` may stay bound to what
// the edit changes. `copyRequested` tells that the user wants the whole value of a `copyable` field, by a
// click on the caption or by the key for copying while nothing is selected.
ColumnLayout {
    id: root

    property string title
    property alias text: field.text
    property alias input: field
    property alias hint: field.hint
    property alias unlimitedLength: field.unlimitedLength
    property bool locked: false
    property bool secret: false
    property bool copyable: false

    signal edited(string value)
    signal copyRequested()

    spacing: 4
    Layout.fillWidth: true

    VOXLabel {
        id: caption
        objectName: "caption"
        Layout.fillWidth: true
        text: root.title.slice(0, 200).toUpperCase()
        elide: Text.ElideRight
        font { pixelSize: 11; weight: Font.DemiBold }
        Accessible.ignored: true

        // A lock, which says that nothing can be typed here.
        Item {
            objectName: "lock"
            visible: root.locked && caption.text !== ""
            x: Math.min(caption.contentWidth + 6, caption.width - width)
            anchors.verticalCenter: parent.verticalCenter
            width: 8
            height: 10

            Rectangle {
                x: 1
                width: 6
                height: 8
                radius: 3
                color: "transparent"
                border.color: VOXTheme.muted
            }

            Rectangle {
                y: 4
                width: 8
                height: 6
                radius: 1
                color: VOXTheme.muted
            }
        }

        MouseArea {
            id: copyArea
            objectName: "copyArea"
            width: Math.min(caption.contentWidth, caption.width)
            height: caption.height
            visible: root.copyable && root.text !== ""
            hoverEnabled: true
            cursorShape: Qt.PointingHandCursor
            onClicked: root.copyRequested()

            Loader {
                anchors.fill: parent
                active: copyArea.containsMouse
                sourceComponent: Item {
                    VOXToolTip {
                        objectName: "copyTip"
                        visible: true
                        fullText: "Click to copy"
                    }
                }
            }
        }
    }

    VOXField {
        id: field
        objectName: "field"
        Layout.fillWidth: true
        readOnly: root.locked
        echoMode: root.secret ? TextInput.Password : TextInput.Normal
        Accessible.name: root.title
        // The platform keeps back the name of a field for passwords.
        Accessible.description: root.secret ? root.title : ""
        onTextEdited: root.edited(text)
        Keys.onPressed: event => {
            const wholeValue = root.copyable && text !== "" && selectedText === "";
            event.accepted = wholeValue && event.matches(StandardKey.Copy);
            if (event.accepted)
                root.copyRequested();
        }
    }
}
