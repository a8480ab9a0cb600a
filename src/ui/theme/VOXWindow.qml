import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Templates as T
import KvtEditor

// A window in the theme's colours, so that what the theme does not restyle is dark too: drop-down lists,
// dialogs, tool tips, plain fields. The roles are set one by one, because assigning a whole palette does not
// affect popups.
ApplicationWindow {
    id: root

    readonly property Item overlayItem: T.Overlay.overlay

    color: VOXTheme.bg

    // Whether a dialog or a popup waits for the user. A tool tip, which is in the same overlay, does not.
    function asking(): bool {
        const isToolTip = popup => Array.from(popup.children).some(
            child => child.objectName === "toolTipText");
        return Array.from(overlayItem.children).some(popup => popup.visible && !isToolTip(popup));
    }

    palette {
        window: VOXTheme.panel
        windowText: VOXTheme.text
        base: VOXTheme.input
        alternateBase: VOXTheme.panel
        text: VOXTheme.text
        placeholderText: VOXTheme.muted
        button: VOXTheme.buttonFill
        buttonText: VOXTheme.text
        brightText: VOXTheme.accentText
        highlight: VOXTheme.selection
        highlightedText: VOXTheme.accentText
        light: VOXTheme.panel
        midlight: VOXTheme.buttonFill
        mid: VOXTheme.scrollHandle
        dark: VOXTheme.scrollHandleActive
        shadow: VOXTheme.backdropBottom
        toolTipBase: VOXTheme.buttonFill
        toolTipText: VOXTheme.text
        link: VOXTheme.orangeBright
        linkVisited: VOXTheme.orangeBright
    }

    InnerDialogs {
        window: root
    }
}
