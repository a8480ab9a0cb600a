import QtQuick
import KvtEditor

// One thing that the store offers: its title, a muted line with its price, and the button that fetches it.
// The button is not a separate Tab stop: Return on the row does the same.
VOXListRow {
    id: root

    required property int index
    property string title
    property string about
    property int credits: 0
    property alias action: button.text
    property alias actionWidth: button.width
    // Lets the muted line become as many as it takes.
    property bool wrapping: false

    readonly property string price: "  •  " + credits + " credits"
    // Long texts are cut, so that the price stays in sight and layout stays cheap.
    readonly property int longest: wrapping ? 2000 : 400

    signal wanted()

    function oneLine(text: string): string {
        const shown = text.slice(0, longest).replace(/[\r\n\u2028\u2029]+/g, " ");
        return text.length > longest ? shown + "…" : shown;
    }

    function makeCurrent(): void {
        list.forceActiveFocus(Qt.MouseFocusReason);
        list.currentIndex = index;
    }

    height: Math.max(button.height, texts.height) + 20
    fullText: title + "\n" + about + price
    shortened: titleText.truncated || aboutText.truncated || title.length > longest || about.length > longest
    onClicked: makeCurrent()

    Accessible.name: title + ", " + about + price

    Column {
        id: texts
        anchors { left: parent.left; leftMargin: 12; right: button.left; rightMargin: 16 }
        anchors.verticalCenter: parent.verticalCenter
        spacing: 3

        Text {
            id: titleText
            objectName: "title"
            width: parent.width
            text: root.oneLine(root.title)
            textFormat: Text.PlainText
            elide: Text.ElideRight
            color: VOXTheme.text
            font.pixelSize: 13
            Accessible.ignored: true
        }

        Text {
            id: aboutText
            objectName: "about"
            width: parent.width
            text: root.oneLine(root.about) + root.price
            textFormat: Text.PlainText
            wrapMode: root.wrapping ? Text.Wrap : Text.NoWrap
            elide: root.wrapping ? Text.ElideNone : Text.ElideMiddle
            color: VOXTheme.muted
            font.pixelSize: 12
            Accessible.ignored: true
        }
    }

    VOXButton {
        id: button
        objectName: "action"
        anchors { right: parent.right; rightMargin: 10; verticalCenter: parent.verticalCenter }
        focusPolicy: Qt.NoFocus
        Accessible.name: text + " " + root.title
        onClicked: {
            root.makeCurrent();
            root.wanted();
        }
    }
}
