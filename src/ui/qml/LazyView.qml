import QtQuick
import QtQuick.Layouts

// A part of the window that is made when it is first needed, or earlier when the window has nothing else to do, and
// then stays. It is named by its file: a type named in the source would be loaded with the window.
Loader {
    id: root

    required property string file
    // Whether it is to be seen.
    property bool wanted: StackLayout.isCurrentItem
    // What Ctrl+F leads to, if anything.
    readonly property Item searchField: view?.searchField ?? null
    // Without a type: of an object the linter would say that it has no such field.
    readonly property var view: item

    // The file could not be loaded; the messages say why.
    signal failed

    // Little by little, between frames.
    function prepare(): void {
        active = true;
    }

    // At once.
    function make(): void {
        asynchronous = false;
        active = true;
    }

    active: false
    asynchronous: true
    source: Qt.resolvedUrl(file)
    onStatusChanged: {
        if (status === Loader.Error)
            failed();
    }
    onWantedChanged: {
        if (wanted)
            make();
    }
}
