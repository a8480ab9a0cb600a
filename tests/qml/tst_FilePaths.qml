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
            { tag: "replacement-character", path: "/home/u/\uFFFD.kvt" }
        ];
    }

    function test_pathOfFileUrl(data) {
        compare("/" + FilePaths.pathFromUrl(fixture.urlOf(data.path)), data.path);
        compare("/" + FilePaths.pathFromUrl(fixture.urlOf(data.path).toString()), data.path);
    }

    function test_pathOfText_data() {
        return [
            { tag: "three-slashes", text: "file:///C:/tunes/x.kvt", path: "C:/tunes/x.kvt" },
            { tag: "two-slashes", text: "file://server/share/x.kvt", path: "server/share/x.kvt" },
            { tag: "first-occurrence-only", text: "file:///a/file:///b.kvt", path: "a/file:///b.kvt" },
            { tag: "one-prefix-only", text: "file:///file://b.kvt", path: "file://b.kvt" },
            { tag: "no-prefix", text: "/home/u/x.kvt", path: "/home/u/x.kvt" },
            { tag: "not-decodable", text: "/home/u/100%.kvt", path: "/home/u/100%.kvt" },
            { tag: "text-not-utf-8", text: "/home/u/%FF.kvt", path: "/home/u/%FF.kvt" },
            { tag: "text-not-utf-8-with-more", text: "/home/u/%20%FF.kvt", path: "/home/u/%20%FF.kvt" },
            { tag: "url-within", text: "/home/file:///u/%FF.kvt", path: "/home/u/%FF.kvt" },
            { tag: "empty", text: "", path: "" }
        ];
    }

    function test_pathOfText(data) {
        compare(FilePaths.pathFromUrl(data.text), data.path);
    }

    // None of these may lead to the file that has the escape itself in its name.
    function test_pathOfUrlThatIsNoUtf8_data() {
        return [
            { tag: "latin-1", url: "file:///u/caf%E9.kvt", path: "u/caf\uFFFD.kvt" },
            { tag: "small-letters", url: "file:///u/caf%e9.kvt", path: "u/caf\uFFFD.kvt" },
            { tag: "invalid-byte", url: "file:///u/%FF.kvt", path: "u/\uFFFD.kvt" },
            { tag: "run", url: "file:///u/%FF%FE%80.kvt", path: "u/\uFFFD\uFFFD.kvt" },
            { tag: "cut", url: "file:///u/%C3.kvt", path: "u/\uFFFD.kvt" },
            { tag: "overlong", url: "file:///u/%C0%AF.kvt", path: "u/\uFFFD.kvt" },
            { tag: "half-a-character", url: "file:///u/%ED%A0%80.kvt", path: "u/\uFFFD.kvt" },
            { tag: "folder", url: "file:///u/%E9/x.kvt", path: "u/\uFFFD/x.kvt" },
            { tag: "beside-others", url: "file:///u/%20%C3%A9%E9%2541.kvt", path: "u/ \u00E9\uFFFD%41.kvt" },
            { tag: "beyond-16-bit", url: "file:///u/%FF%F0%9F%98%80.kvt", path: "u/\uFFFD\u{1F600}.kvt" },
            { tag: "no-escape", url: "file:///u/%E9100%.kvt", path: "u/\uFFFD100%.kvt" },
            { tag: "two-slashes", url: "file://u/caf%E9.kvt", path: "u/caf\uFFFD.kvt" }
        ];
    }

    function test_pathOfUrlThatIsNoUtf8(data) {
        compare(FilePaths.pathFromUrl(data.url), data.path);
    }

    function test_proposedNameKeepsEveryCharacter_data() {
        return test_pathOfFileUrl_data();
    }

    function test_proposedNameKeepsEveryCharacter(data) {
        const url = fixture.urlOf(data.path);
        const name = data.path.slice("/home/u/".length);
        compare(FilePaths.inFolder(String(url).slice(0, String(url).lastIndexOf("/")), name), fixture.encodedUrlOf(data.path));
    }

    function test_folders() {
        compare(FilePaths.inFolder("file:///", "x.kvt"), "file:///x.kvt");
        compare(FilePaths.inFolder("file:///home/u/", "x.kvt"), "file:///home/u/x.kvt");
    }

    function test_halfACharacter() {
        compare(FilePaths.inFolder("file:///u", "x\uD800.kvt"), "file:///u/x%EF%BF%BD.kvt");
        compare(FilePaths.inFolder("file:///u", "\uDC00\uD800"), "file:///u/%EF%BF%BD%EF%BF%BD");
        compare(FilePaths.inFolder("file:///u", "\u{1F600}"), "file:///u/%F0%9F%98%80");
    }

    function test_urlOf_data() {
        return [
            { tag: "plain", path: "/u/a%20b#1?.kvt", url: "file:///u/a%2520b%231%3F.kvt" },
            { tag: "root", path: "/", url: "file:///" },
            { tag: "like-a-url", path: "/file:/x", url: "file:///file%3A/x" },
            { tag: "half-a-character", path: "/u/x\uD800", url: "file:///u/x%EF%BF%BD" }
        ];
    }

    function test_urlOf(data) {
        compare(FilePaths.urlOf(data.path), data.url);
    }
}
