pragma Singleton

import QtQuick

// The one dark look: every colour and measure that more than one view uses.
QtObject {
    readonly property color bg: "#0A0C10"
    readonly property color panel: "#12151C"
    readonly property color input: "#0E1118"
    readonly property color border: "#2A3040"
    readonly property color orange: "#E85D04"
    readonly property color orangeBright: "#FF8C00"
    readonly property color text: "#E8EAED"
    readonly property color muted: "#8B929E"
    readonly property color success: "#50C878"
    readonly property color error: "#F05050"
    readonly property color buttonFill: "#282C36"

    readonly property int radiusCard: 12
    readonly property int radiusControl: 8
    readonly property int sidebarMin: 180
    readonly property int sidebarIdeal: 200
    readonly property int sidebarMax: 260

    // Text on the accent, and the ring around what has the keyboard.
    readonly property color accentText: "#FFFFFF"
    readonly property color focusRing: "#FFB066"

    // The accent dimmed until white text on it is easy to read: selected rows of lists and menus.
    readonly property color selection: "#C24A00"
    readonly property color disabledText: "#7B8291"
    // The bytes that a search found: dark enough that muted text on it is easy to read, even in a tinted row.
    readonly property color matchFill: "#0D1D3D"
    readonly property color matchEdge: "#5B9BE6"
    // Selected bytes, those that differ from another file, and the cursor's frame where nothing is typed.
    readonly property color selectedFill: "#3B2A12"
    readonly property color differentFill: "#45141B"
    readonly property color mapMark: "#D8505E"
    readonly property color orangeDim: "#9A5A1E"
    readonly property color scrollHandle: "#4A5265"
    readonly property color scrollHandleActive: "#6D7588"

    // The backdrop's ends, the bars that let it shine through, and the veil under the hex editor.
    readonly property color backdropTop: "#161B26"
    readonly property color backdropBottom: "#06070A"
    readonly property color bar: Qt.alpha(panel, 0.85)
    readonly property color veil: Qt.alpha(bg, 0.92)

    // Over a tile that cannot be used yet.
    readonly property color scrim: Qt.alpha(backdropBottom, 0.6)

    // Columns of bytes line up in a fixed pitch only, and not every system has the first choice.
    readonly property string fixedFamily: firstFamily(["Consolas", "DejaVu Sans Mono", "Liberation Mono",
        "Menlo", "Courier New"])

    // The accent with transparency, for glows and highlights.
    function accent(alpha: real): color {
        return Qt.alpha(orange, alpha);
    }

    function firstFamily(wanted: var): string {
        const installed = Qt.fontFamilies();
        return wanted.find(family => installed.includes(family)) ?? "monospace";
    }
}
