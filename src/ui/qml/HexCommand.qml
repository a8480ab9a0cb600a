import QtQuick

// A command of the hex editor under its key. A key that is held down acts once, unless told otherwise.
Shortcut {
    property string text
    // Whether it would do something now. Its key works all the same, and tells why it does nothing.
    property bool sensible: true

    autoRepeat: false
}
