import QtQuick
import KvtEditor

// Where the columns of the hex editor's rows stand. A byte is three characters of a fixed pitch in the one,
// and one in the other. Beside another file the columns are as narrow as their texts.
Item {
    id: root

    // That of the rows.
    required property real rowWidth
    property bool comparing: false
    readonly property int bytesPerRow: 16
    readonly property int spacing: comparing ? 10 : 12
    readonly property int offsetX: 8
    readonly property int offsetWidth: comparing ? 64 : 80
    readonly property int digitsX: offsetX + offsetWidth + spacing
    readonly property int leastDigitsWidth: Math.ceil((3 * bytesPerRow - 1) * pitch) + 2
    readonly property real digitsWidth: comparing ? leastDigitsWidth : Math.max(280, rowWidth - 260)
    readonly property real charactersX: digitsX + digitsWidth + spacing
    readonly property int charactersWidth: comparing ? Math.ceil(bytesPerRow * pitch) : 140
    readonly property real otherDigitsX: charactersX + charactersWidth + 2 * spacing
    readonly property real otherCharactersX: otherDigitsX + digitsWidth + spacing
    // What rows need that show all of it, with a map and a scroll bar.
    readonly property int neededWidth: comparing
        ? digitsX + 2 * (leastDigitsWidth + charactersWidth) + 4 * spacing + 28 : leastDigitsWidth + 276
    readonly property font font: Qt.font({ family: VOXTheme.fixedFamily, pixelSize: 12 })
    // Taken from a text like those of the rows: what font metrics say is rounded, which sixteen bytes would
    // show.
    readonly property real pitch: sample.contentWidth / sample.text.length

    // The byte of a row whose digits or character stand there, or -1.
    function byteAt(x: real): int {
        const digits = digitsAt(x, isOther(x) ? otherDigitsX : digitsX);
        const place = digits < bytesPerRow ? digits : charactersAt(x, isOther(x) ? otherCharactersX : charactersX);
        return place >= 0 && place < bytesPerRow ? place : -1;
    }

    // The byte that is nearest, for a pointer that drags.
    function nearestByte(x: real): int {
        const place = inCharacters(x) ? charactersAt(x, isOther(x) ? otherCharactersX : charactersX)
            : digitsAt(x, isOther(x) ? otherDigitsX : digitsX);
        return Math.max(0, Math.min(place, bytesPerRow - 1));
    }

    function inCharacters(x: real): bool {
        return x >= (isOther(x) ? otherCharactersX : charactersX) - spacing / 2;
    }

    function isOther(x: real): bool {
        return comparing && x >= otherDigitsX - spacing;
    }

    function digitsAt(x: real, start: real): int {
        return Math.floor((x - start) / (3 * pitch) + 1 / 6);
    }

    function charactersAt(x: real, start: real): int {
        return Math.floor((x - start) / pitch);
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
