import QtQuick
import QtQuick.Dialogs
import KvtEditor

// Asks where to save, and reports the path. Before a file is replaced, this asks where the dialog does not.
Item {
    id: root

    readonly property AppState appState: app // qmllint disable unqualified
    property alias dialog: picker
    // What a name without a suffix gets.
    property string suffix

    signal taken(string path)

    function ask(): void {
        picker.ask();
    }

    function close(): void {
        picker.dismiss();
        question.close();
    }

    PickFileDialog {
        id: picker
        fileMode: FileDialog.SaveFile
        acceptLabel: "Save"
        onTaken: path => {
            const whole = FilePaths.withSuffix(path, root.suffix);
            // The desktop's dialogs have asked about the name as it was typed. Without a screen nobody is asked.
            const asked = OwnDialogs.host === null && whole === path;
            question.path = whole;
            if (asked || !root.appState.replacesOtherFile(whole))
                root.taken(whole);
            else
                question.open();
        }
    }

    VOXQuestion {
        id: question

        property string path

        question: "Replace " + path.slice(path.lastIndexOf("/") + 1) + "?"
        explanation: "A file of this name is already there. What it holds will be lost."
        onAnswered: yes => {
            if (yes)
                root.taken(path);
            else
                picker.askAgain();
        }
    }
}
