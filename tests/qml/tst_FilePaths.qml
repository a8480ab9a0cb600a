import QtQuick
import QtTest
import KvtEditor

TestCase {
    name: "FilePaths"

    function init() {
        failOnWarning(/.?/);
    }

    function test_pathOfFileUrl_data() {
        return [
            { tag: "plain", path: "/home/u/x.kvt" },
            { tag: "percent", path: "/home/u/100%.kvt" },
            { tag: "looks-encoded", path: "/home/u/a%20b.kvt" },
            { tag: "looks-encoded-percent", path: "/home/u/%25.kvt" },
            { tag: "looks-encoded-letter", path: "/home/u/%41%.kvt" },
            { tag: "blank-hash-question", path: "/home/u/a b#1?.kvt" },
            { tag: "umlaut-newline", path: "/home/u/ä\nb.kvt" },
            { tag: "tag-and-ampersand", path: "/home/u/<b>&R&D\"'.kvt" },
            { tag: "brackets", path: "/home/u/[x]{y}^`|\\;=+,@.kvt" },
            { tag: "right-to-left-override", path: "/home/u/\u202Ex.kvt" },
            { tag: "beyond-16-bit", path: "/home/u/\u{1F600}.kvt" },
            { tag: "control", path: "/home/u/\u0001\u007F.kvt" },
            { tag: "no-character-of-its-encoding", path: "/home/u/\uFFFD.kvt" }
        ];
    }

    function test_pathOfFileUrl(data) {
        compare("/" + FilePaths.pathFromUrl(bed.urlOf(data.path)), data.path);
        compare("/" + FilePaths.pathFromUrl(bed.urlOf(data.path).toString()), data.path);
    }

    function test_pathOfText_data() {
        return [
            { tag: "three-slashes", text: "file:///C:/tunes/x.kvt", path: "C:/tunes/x.kvt" },
            { tag: "two-slashes", text: "file://server/share/x.kvt", path: "server/share/x.kvt" },
            { tag: "first-occurrence-only", text: "file:///a/file:///b.kvt", path: "a/file:///b.kvt" },
            { tag: "one-prefix-only", text: "file:///file://b.kvt", path: "file://b.kvt" },
            { tag: "no-prefix", text: "/home/u/x.kvt", path: "/home/u/x.kvt" },
            { tag: "not-decodable", text: "/home/u/100%.kvt", path: "/home/u/100%.kvt" },
            { tag: "not-utf-8", text: "file:///home/u/%FF.kvt", path: "home/u/%FF.kvt" },
            { tag: "empty", text: "", path: "" }
        ];
    }

    function test_pathOfText(data) {
        compare(FilePaths.pathFromUrl(data.text), data.path);
    }

    function test_proposedNameKeepsEveryCharacter_data() {
        return test_pathOfFileUrl_data();
    }

    function test_proposedNameKeepsEveryCharacter(data) {
        const url = bed.urlOf(data.path);
        const name = data.path.slice("/home/u/".length);
        compare(FilePaths.inFolder(String(url).slice(0, String(url).lastIndexOf("/")), name), bed.encodedUrlOf(data.path));
    }

    function test_folders() {
        compare(FilePaths.inFolder("file:///", "x.kvt"), "file:///x.kvt");
        compare(FilePaths.inFolder("file:///home/u/", "x.kvt"), "file:///home/u/x.kvt");
    }
}
