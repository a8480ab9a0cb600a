import QtQuick
import QtQuick.Controls.Basic
import QtTest
import KvtEditor

ViewTest {
    name: "Theme"

    function test_colours_data() {
        return [
            { tag: "bg", value: "#0a0c10" },
            { tag: "panel", value: "#12151c" },
            { tag: "input", value: "#0e1118" },
            { tag: "border", value: "#2a3040" },
            { tag: "orange", value: "#e85d04" },
            { tag: "orangeBright", value: "#ff8c00" },
            { tag: "text", value: "#e8eaed" },
            { tag: "muted", value: "#8b929e" },
            { tag: "success", value: "#50c878" },
            { tag: "error", value: "#f05050" },
            { tag: "buttonFill", value: "#282c36" }
        ];
    }

    function test_colours(data) {
        compare(VOXTheme[data.tag].toString(), data.value);
    }

    function test_measures() {
        compare(VOXTheme.radiusCard, 12);
        compare(VOXTheme.radiusControl, 8);
        compare(VOXTheme.sidebarMin, 180);
        compare(VOXTheme.sidebarIdeal, 200);
        compare(VOXTheme.sidebarMax, 260);
    }

    function test_accentWithTransparency() {
        compare(VOXTheme.accent(0.12), Qt.rgba(232 / 255, 93 / 255, 4 / 255, 0.12));
    }

    function test_fixedFamilyIsInstalled() {
        verify(Qt.fontFamilies().includes(VOXTheme.fixedFamily), VOXTheme.fixedFamily);
        compare(VOXTheme.firstFamily([VOXTheme.fixedFamily, "Other"]), VOXTheme.fixedFamily);
        compare(VOXTheme.firstFamily(["No such family"]), "monospace");
    }

    function test_textIsEasyToRead_data() {
        return [
            { tag: "text-on-card", text: VOXTheme.text, ground: VOXTheme.panel },
            { tag: "text-on-button", text: VOXTheme.text, ground: VOXTheme.buttonFill },
            { tag: "muted-on-card", text: VOXTheme.muted, ground: VOXTheme.panel },
            { tag: "placeholder-on-field", text: VOXTheme.muted, ground: VOXTheme.input },
            { tag: "success-on-bar", text: VOXTheme.success, ground: VOXTheme.panel },
            { tag: "error-on-bar", text: VOXTheme.error, ground: VOXTheme.panel },
            { tag: "orange-on-card", text: VOXTheme.orange, ground: VOXTheme.panel },
            { tag: "selected-row", text: VOXTheme.accentText, ground: VOXTheme.selection },
            { tag: "focus-ring-on-button", text: VOXTheme.focusRing, ground: VOXTheme.buttonFill }
        ];
    }

    function test_textIsEasyToRead(data) {
        verify(contrast(data.text, data.ground) >= 4.5, contrast(data.text, data.ground));
    }

    // What is not restyled takes the window's palette, popups included.
    function test_palettePairs_data() {
        return [
            { tag: "window", text: "windowText", ground: "window" },
            { tag: "base", text: "text", ground: "base" },
            { tag: "placeholder", text: "placeholderText", ground: "base" },
            { tag: "button", text: "buttonText", ground: "button" },
            { tag: "pressed-button", text: "buttonText", ground: "mid" },
            { tag: "highlight", text: "highlightedText", ground: "highlight" },
            { tag: "default-button", text: "brightText", ground: "dark" },
            { tag: "row", text: "text", ground: "light" },
            { tag: "pressed-row", text: "text", ground: "midlight" },
            { tag: "alternate-row", text: "text", ground: "alternateBase" },
            { tag: "tool-tip", text: "toolTipText", ground: "toolTipBase" },
            { tag: "link", text: "link", ground: "window" }
        ];
    }

    function test_palettePairs(data) {
        const popup = createTemporaryObject(popupComponent, window.contentItem);
        for (const palette of [window.palette, popup.palette]) {
            verify(luminance(palette[data.ground]) < 0.2, palette[data.ground]);
            verify(contrast(palette[data.text], palette[data.ground]) >= 4.5);
        }
    }

    Component {
        id: popupComponent

        Popup {}
    }
}
