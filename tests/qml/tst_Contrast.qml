import QtQuick
import QtTest
import KvtEditor

// The texts of the look are easy to read on their grounds: at least 4.5 to 1. Pairs of which less was given with
// the look stand here with the reason. Grounds that let the backdrop's glow through are not measured.
ViewTest {
    name: "Contrast"

    readonly property color currentRow: Qt.tint(VOXTheme.input, VOXTheme.accent(0.15))
    // The row's tint lies over the mark.
    readonly property color matchInCurrentRow: Qt.tint(VOXTheme.matchFill, VOXTheme.accent(0.15))
    readonly property color chosenRow: Qt.tint(VOXTheme.input, VOXTheme.accent(0.22))
    readonly property color hoveredRow: Qt.tint(VOXTheme.input, VOXTheme.accent(0.12))
    // Where a card's caption begins, its glow has faded to this.
    readonly property color captionGround: Qt.tint(VOXTheme.panel, VOXTheme.accent(0.22 * 12 / 28))
    readonly property color barOverBackdrop: Qt.tint(VOXTheme.backdropTop, VOXTheme.bar)
    readonly property color hoveredButton: Qt.tint(VOXTheme.buttonFill, Qt.rgba(1, 1, 1, 0.06))
    // The brightest that may shine through the veil.
    readonly property color veilOverText: Qt.tint(VOXTheme.text, VOXTheme.veil)

    // The accent was chosen to be the button's fill, and the fill's text to be white.
    readonly property string brandFill: "white on the accent is given for primary buttons and selected text"

    function test_pair_data() {
        return [
            { tag: "text-on-window", text: VOXTheme.text, ground: VOXTheme.bg },
            { tag: "text-on-card", text: VOXTheme.text, ground: VOXTheme.panel },
            { tag: "text-on-field", text: VOXTheme.text, ground: VOXTheme.input },
            { tag: "text-on-button", text: VOXTheme.text, ground: VOXTheme.buttonFill },
            { tag: "text-on-hovered-button", text: VOXTheme.text, ground: hoveredButton },
            { tag: "text-on-bar", text: VOXTheme.text, ground: barOverBackdrop },
            { tag: "muted-on-bar", text: VOXTheme.muted, ground: barOverBackdrop },
            { tag: "success-on-bar", text: VOXTheme.success, ground: barOverBackdrop },
            { tag: "error-on-bar", text: VOXTheme.error, ground: barOverBackdrop },
            { tag: "card-caption", text: VOXTheme.orange, ground: captionGround },
            { tag: "text-on-veil", text: VOXTheme.text, ground: veilOverText },

            { tag: "muted-on-window", text: VOXTheme.muted, ground: VOXTheme.bg },
            { tag: "muted-on-card", text: VOXTheme.muted, ground: VOXTheme.panel },
            { tag: "muted-on-field", text: VOXTheme.muted, ground: VOXTheme.input },
            { tag: "muted-on-veil", text: VOXTheme.muted, ground: veilOverText },
            { tag: "success-on-veil", text: VOXTheme.success, ground: veilOverText },
            { tag: "error-on-veil", text: VOXTheme.error, ground: veilOverText },

            { tag: "orange-on-window", text: VOXTheme.orange, ground: VOXTheme.bg },
            { tag: "orange-on-card", text: VOXTheme.orange, ground: VOXTheme.panel },
            { tag: "orange-on-field", text: VOXTheme.orange, ground: VOXTheme.input },
            { tag: "bright-orange-on-window", text: VOXTheme.orangeBright, ground: VOXTheme.bg },
            { tag: "bright-orange-on-card", text: VOXTheme.orangeBright, ground: VOXTheme.panel },
            { tag: "bright-orange-on-field", text: VOXTheme.orangeBright, ground: VOXTheme.input },
            { tag: "bright-orange-on-button", text: VOXTheme.orangeBright, ground: VOXTheme.buttonFill },

            { tag: "success-on-window", text: VOXTheme.success, ground: VOXTheme.bg },
            { tag: "success-on-card", text: VOXTheme.success, ground: VOXTheme.panel },
            { tag: "success-on-field", text: VOXTheme.success, ground: VOXTheme.input },
            { tag: "error-on-window", text: VOXTheme.error, ground: VOXTheme.bg },
            { tag: "error-on-card", text: VOXTheme.error, ground: VOXTheme.panel },
            { tag: "error-on-field", text: VOXTheme.error, ground: VOXTheme.input },

            { tag: "disabled-on-card", text: VOXTheme.disabledText, ground: VOXTheme.panel },
            { tag: "disabled-on-field", text: VOXTheme.disabledText, ground: VOXTheme.input },
            { tag: "chosen-entry", text: VOXTheme.accentText, ground: VOXTheme.selection },
            { tag: "tool-tip", text: VOXTheme.text, ground: VOXTheme.buttonFill },

            { tag: "hex-offset-in-current-row", text: VOXTheme.orange, ground: currentRow },
            { tag: "hex-digits-in-current-row", text: VOXTheme.text, ground: currentRow },
            { tag: "hex-text-in-current-row", text: VOXTheme.muted, ground: currentRow },
            { tag: "hex-digits-in-match", text: VOXTheme.text, ground: VOXTheme.matchFill },
            { tag: "hex-text-in-match", text: VOXTheme.muted, ground: VOXTheme.matchFill },
            { tag: "hex-digits-in-match-in-current-row", text: VOXTheme.text, ground: matchInCurrentRow },
            { tag: "hex-text-in-match-in-current-row", text: VOXTheme.muted, ground: matchInCurrentRow },
            { tag: "text-in-chosen-row", text: VOXTheme.text, ground: chosenRow },
            { tag: "text-in-hovered-row", text: VOXTheme.text, ground: hoveredRow },
            { tag: "muted-in-hovered-row", text: VOXTheme.muted, ground: hoveredRow },

            { tag: "white-on-orange", text: VOXTheme.accentText, ground: VOXTheme.orange, atLeast: 3.4,
              given: brandFill }
        ];
    }

    function test_pair(data) {
        const ratio = contrast(data.text, data.ground);
        verify(ratio >= (data.atLeast ?? 4.5), data.tag + ": " + ratio.toFixed(2));
        // An exception that is no longer needed has to go.
        if (data.given)
            verify(ratio < 4.5, data.tag + " needs no exception: " + data.given);
    }

    // Marks and rings are not text: 3 to 1 beside what they lie on.
    function test_mark_data() {
        return [
            { tag: "cursor-in-current-row", mark: VOXTheme.orangeBright, ground: currentRow },
            { tag: "cursor-in-match", mark: VOXTheme.orangeBright, ground: matchInCurrentRow },
            { tag: "match", mark: VOXTheme.matchEdge, ground: VOXTheme.input },
            { tag: "match-in-current-row", mark: VOXTheme.matchEdge, ground: currentRow },
            { tag: "row-of-the-menu", mark: VOXTheme.muted, ground: VOXTheme.input },
            { tag: "field-with-keyboard", mark: VOXTheme.orangeBright, ground: VOXTheme.input },
            { tag: "button-with-keyboard", mark: VOXTheme.focusRing, ground: VOXTheme.buttonFill },
            { tag: "checked-box", mark: VOXTheme.orange, ground: VOXTheme.input }
        ];
    }

    function test_mark(data) {
        const ratio = contrast(data.mark, data.ground);
        verify(ratio >= 3, data.tag + ": " + ratio.toFixed(2));
    }

    // Two marks that can lie beside each other are told apart by more than their hue.
    function test_cursorAndMatchDiffer() {
        const onMatch = colour => contrast(colour, VOXTheme.matchFill);
        verify(onMatch(VOXTheme.orangeBright) > onMatch(VOXTheme.matchEdge));
        verify(VOXTheme.orangeBright.hsvHue < 0.2 && VOXTheme.matchEdge.hsvHue > 0.5);
    }
}
