pragma Singleton

import QtQml

// Turns what the file dialogs hand over into the paths that the controller takes.
QtObject {
    // One character or one run of bytes, escaped.
    readonly property var escapes: /%[0-7][0-9a-f]|%[89a-f][0-9a-f](?:%[89ab][0-9a-f])*/gi

    // The text of a url is readable but for the escapes that must stay, "%25" among them, so one decoding
    // gives the name back as it is on disk. A text that was never a url, and so may not decode, is taken as
    // it is.
    function pathFromUrl(address: var): string {
        const text = String(address);
        const path = text.includes("file:///") ? text.replace("file:///", "") : text.replace("file://", "");
        if (text.startsWith("file:"))
            return path.replace(escapes, decodedOrMark);
        try {
            return decodeURIComponent(path);
        } catch (error) {
            return path;
        }
    }

    // What is no UTF-8 must not stay as it is, which may be another file's name.
    function decodedOrMark(escaped: string): string {
        try {
            return whole(decodeURIComponent(escaped));
        } catch (error) {
            return "\uFFFD";
        }
    }

    // A text without the halves of characters that a service can send, and that cannot be encoded.
    function whole(text: string): string {
        return text.replace(/[\uD800-\uDBFF][\uDC00-\uDFFF]|[\uD800-\uDFFF]/g,
            found => found.length === 2 ? found : "\uFFFD");
    }

    function encoded(name: string): string {
        return encodeURIComponent(whole(name));
    }

    // The url of a file by its name, in a folder's url.
    function inFolder(folder: var, name: string): string {
        return String(folder).replace(/\/$/, "") + "/" + encoded(name);
    }

    // The path of a file, with a suffix if its name has none.
    function withSuffix(path: string, suffix: string): string {
        return path.lastIndexOf(".") > path.lastIndexOf("/") + 1 ? path : path + suffix;
    }

    // The url of a path from the root.
    function urlOf(path: string): string {
        return "file://" + path.split("/").map(part => encoded(part)).join("/");
    }
}
