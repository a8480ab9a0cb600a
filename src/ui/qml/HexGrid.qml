import QtQuick
import KvtEditor

// Where the columns of the hex editor's rows stand. A byte is three characters of a fixed pitch in the one,
// and one in the other.
Item {
    id: root

    // That of the rows.
    required property real rowWidth
    readonly property int bytesPerRow: 16
    readonly property int spacing: 12
    readonly property int offsetX: 8
    readonly property int offsetWidth: 80
    readonly property int digitsX: offsetX + offsetWidth + spacing
    readonly property real digitsWidth: Math.max(280, rowWidth - 260)
    readonly property real charactersX: digitsX + digitsWidth + spacing
    readonly property int charactersWidth: 140
    readonly property font font: Qt.font({ family: VOXTheme.fixedFamily, pixelSize: 12 })
    // Taken from a text like those of the rows: what font metrics say is rounded, which sixteen bytes would
    // show.
    readonly property real pitch: sample.contentWidth / sample.text.length

    // The byte of a row whose digits or character stand there, or -1.
    function byteAt(x: real): int {
        const inDigits = Math.floor((x - digitsX) / (3 * pitch) + 1 / 6);
        if (inDigits >= 0 && inDigits < bytesPerRow)
            return inDigits;
        const inCharacters = Math.floor((x - charactersX) / pitch);
        return inCharacters >= 0 && inCharacters < bytesPerRow ? inCharacters : -1;
    }

    Text {
        id: sample
        visible: false
        text: "0".repeat(3 * root.bytesPerRow)
        textFormat: Text.PlainText
        font: root.font
        Accessible.ignored: true
    }
}
