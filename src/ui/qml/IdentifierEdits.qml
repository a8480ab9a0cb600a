pragma Singleton

import QtQml

// What the user has changed of the identifiers since the file was opened. Shared by the tabs that show them.
QtObject {
    // What the changed ones were before, by their titles.
    property var before: ({})
    readonly property bool made: Object.keys(before).length > 0

    function begin(): void {
        before = {};
    }

    // A value that is what it was before counts as unchanged.
    function note(title: string, from: string, to: string): void {
        const all = Object.assign({ [title]: from }, before);
        if (all[title] === to)
            delete all[title];
        before = all;
    }
}
