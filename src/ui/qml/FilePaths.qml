pragma Singleton

import QtQml

// Turns what the file dialogs hand over into the paths that the controller takes.
QtObject {
    // The text of a url is readable but for the escapes that must stay, "%25" among them, so one decoding
    // gives the name back as it is on disk. A text that was never a url, and so may not decode, is taken as
    // it is.
    function pathFromUrl(address: var): string {
        const text = String(address);
        const path = text.includes("file:///") ? text.replace("file:///", "") : text.replace("file://", "");
        try {
            return decodeURIComponent(path);
        } catch (error) {
            return path;
        }
    }

    // The url of a file by its name, in a folder's url.
    function inFolder(folder: var, name: string): string {
        return String(folder).replace(/\/$/, "") + "/" + encodeURIComponent(name);
    }
}
