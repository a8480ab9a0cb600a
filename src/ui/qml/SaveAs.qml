import QtQuick
import QtQuick.Dialogs
import KvtEditor

// Asks where to save, and reports the path. Where the dialog itself does not ask before a file is replaced, this does.
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
        picker.close();
        question.close();
    }

    PickFileDialog {
        id: picker
        fileMode: FileDialog.SaveFile
        acceptLabel: "Save"
        onTaken: path => {
            const whole = FilePaths.withSuffix(path, root.suffix);
            // A dialog that asks has asked about the name as it was typed.
            const asked = FilePaths.dialogAsks && whole === path;
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
                picker.open();
        }
    }
}
