pragma Singleton

import QtQml

// Whether the user has typed into an identifier since the file was opened. Shared by the tabs that show them.
QtObject {
    property bool made: false
}
