pragma Singleton

import QtQml

// Whether the user has edited an identifier of the open file, on whichever tab.
QtObject {
    property bool made: false
}
