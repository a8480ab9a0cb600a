import QtQuick
import KvtEditor

// A test of what the window does with texts of the worst kind: it walks over every item in sight.
ViewTest {
    id: root

    function texts(): var {
        return {
            "picture": "<img src='" + fixture.address("picture.png") + "'>",
            "entities": "<img src='" + fixture.address("picture.png").replace(/\//g, "&#47;") + "'>",
            "tag": "<b>bold</b>",
            "ampersand": "R&D &amp;&lt;b&gt;",
            "newlines": "line\n".repeat(300),
            "carriage-returns": "line\r\u2028".repeat(300),
            "nul": "a\u0000b",
            "override": "a\u202Eb",
            "lone-surrogate": "a\uD800b",
            "combining": "a" + "\u0301".repeat(2000),
            "links": "<a href='javascript:x()'>x</a> file:///etc/passwd",
            "markdown": "![x](" + fixture.address("picture.png") + ")",
            "place-holder": "%1 %2 %n",
            "long": "x".repeat(100000)
        };
    }

    function rows(tags: var): var {
        return tags.map(tag => ({ tag: tag }));
    }

    // Half a character has no UTF-8, but JSON can spell it.
    function bodyOf(object: var): string {
        return JSON.stringify(object).split("\uD800").join("\\ud800");
    }

    // What the service answers to a call, until the status line tells of it.
    function answerWords(words: string, call: var): void {
        fixture.answerNext(words);
        app.setStatus("");
        call();
        tryVerify(() => app.status !== "", 30000);
    }

    function answer(object: var, call: var): void {
        answerWords(bodyOf(object), call);
    }

    function visitAll(): void {
        app.showHex = true;
        app.showHex = false;
        for (const key of window.viewKeys) {
            app.tab = key;
            render();
        }
    }

    // Every item in sight, however deep; popups are in the overlay.
    function inSight(): var {
        return fixture.visibleItems(window.contentItem).concat(fixture.visibleItems(window.overlayItem));
    }

    function clipperOf(item: var): var {
        let around = item.parent;
        while (around.parent && !around.clip)
            around = around.parent;
        return around;
    }

    // Numbers of our own: those of a rectangle take long to read.
    function placeOf(item: var): var {
        const place = inWindow(item);
        return { left: place.left, top: place.top, right: place.right, bottom: place.bottom };
    }

    function overlapOf(one: var, other: var): var {
        return { left: Math.max(one.left, other.left), top: Math.max(one.top, other.top),
            right: Math.min(one.right, other.right), bottom: Math.min(one.bottom, other.bottom) };
    }

    function isPlace(place: var): bool {
        return place.right - place.left > 1 && place.bottom - place.top > 1;
    }

    // Where the item can be seen, after all that cuts it off.
    function seenOf(item: var): var {
        let seen = placeOf(item);
        for (let around = item.parent; around.parent; around = around.parent) {
            if (around.clip)
                seen = overlapOf(seen, placeOf(around));
        }
        return seen;
    }

    // What covers the window covers what is below: the workspace, the hex editor, each popup.
    function layerOf(item: var): var {
        let layer = item;
        while (layer.parent && layer.parent !== window.contentItem && layer.parent !== window.overlayItem)
            layer = layer.parent;
        return layer;
    }

    // A text that stands askew is a mark across others.
    function textsInSight(): var {
        const isText = item => item instanceof Text || item instanceof TextInput || item instanceof TextEdit
            || item instanceof HexColumn;
        return inSight().filter(item => isText(item) && item.text !== "" && item.rotation === 0).map(
            item => ({ item: item, seen: seenOf(item), layer: layerOf(item) })).filter(entry => isPlace(entry.seen));
    }

    // The first two texts of which one lies on the other; empty when all stand clear.
    function collision(): string {
        const texts = textsInSight();
        const told = entry => entry.item.text.slice(0, 40) + " " + JSON.stringify(entry.seen);
        for (let i = 0; i < texts.length; ++i) {
            for (let j = 0; j < i; ++j) {
                if (texts[i].layer === texts[j].layer && isPlace(overlapOf(texts[i].seen, texts[j].seen)))
                    return told(texts[i]) + " and " + told(texts[j]);
            }
        }
        return "";
    }

    function inside(place: var): bool {
        return place.left >= -1 && place.top >= -1 && place.right <= window.width + 1
            && place.bottom <= window.height + 1;
    }

    // Captions are in capitals, and lists make one line of several.
    function plain(text: string): string {
        return text.toUpperCase().replace(/[\r\n\u2028\u2029]+/g, " ");
    }

    function shows(item: var, text: string): bool {
        return plain(item.text.slice(0, 5000)).includes(plain(text.slice(0, 100).trim()));
    }

    // What is wrong with how the item shows its text; empty when nothing is.
    function faultOf(item: var): string {
        // A line of input has no format.
        if (item instanceof TextInput)
            return item.unlimitedLength || item.text.length <= 32767 ? "" : "more than a field takes";
        if (item instanceof Text || item instanceof TextEdit) {
            const place = inWindow(item);
            const around = inWindow(clipperOf(item));
            return item.textFormat !== Text.PlainText ? "takes tags"
                : item.contentWidth > item.width + 1 ? item.contentWidth + " wide in " + item.width
                : item.contentHeight > item.height + 1 ? item.contentHeight + " high in " + item.height
                : place.left < around.left - 1 || place.right > around.right + 1 ? place + " beyond " + around
                : !inside(seenOf(item)) ? "out of the window" : "";
        }
        if (item instanceof HexColumn) {
            const width = item.text.length * find("hexRows").grid.pitch;
            return width > item.width + 1 ? width + " wide in " + item.width : "";
        }
        // Qt's own labels in controls take tags.
        return /IconLabel|CheckLabel|MnemonicLabel/.test(String(item.contentItem)) ? "a label of Qt's" : "";
    }

    // Every text in sight is letters; tells how many items say this one.
    function verifyView(text: string): int {
        let count = 0;
        for (const item of inSight()) {
            // A placeholder is a text of our own.
            if (typeof item.text !== "string" || item.text === "" || item.text === item.parent.placeholderText)
                continue;
            const fault = faultOf(item);
            verify(fault === "", [item, item.objectName, item.text.slice(0, 60), fault].join(" "));
            if (shows(item, text))
                ++count;
        }
        compare(collision(), "");
        return count;
    }

    function show(tab: string): void {
        app.tab = tab;
        render();
    }

    function centreOf(name: string): point {
        const place = inWindow(find(name));
        return Qt.point(place.x + place.width / 2, place.y + place.height / 2);
    }

    // Opens a tool tip by its owner, and sees that it lies in the window as letters.
    function verifyTip(owner: var, tip: var, text: string): void {
        render();
        mouseMove(owner, 20, owner.height / 2);
        tryVerify(() => tip.opened, 60000);
        render();
        compare(tip.contentItem.text, text.slice(0, 2000));
        compare(tip.contentItem.textFormat, Text.PlainText);
        verify(inside(inWindow(tip.contentItem)), inWindow(tip.contentItem));
        verify(tip.contentItem.contentWidth <= tip.contentItem.width + 1);
        mouseMove(window.contentItem, 1, 1);
        tryVerify(() => !tip.visible);
    }

    // Names of files that hold a year, a make, an OS and parts that are none of these.
    function fileNames(): var {
        const port = fixture.address("").match(/\d+(?=\/$)/)[0];
        return [
            { tag: "picture", name: "<img src='http:&#47;&#47;127.0.0.1:" + port + "&#47;x.png'>", year: null },
            { tag: "tag", name: "<b>2014<i> R&D &lt;i&gt; 12654321" },
            { tag: "newlines", name: "2014\n".repeat(40) + "12654321" },
            { tag: "separators", name: "2014\r\u2028\u2029\u0085 12654321" },
            { tag: "override", name: "2014 \u202E12654321\u202C" },
            { tag: "combining", name: "2014 12654321 a" + "\u0301".repeat(60) },
            { tag: "quotes", name: "2014 \"12654321\" '" },
            { tag: "markdown", name: "2014 ![x](12654321) `x` *y*" },
            { tag: "place-holder", name: "%1 %2 %n 2014 12654321" },
            { tag: "dots", name: "2014.. .. 12654321 .." },
            { tag: "backslashes", name: "2014\\..\\12654321" },
            { tag: "long", name: "2014 12654321 " + "x".repeat(230) }
        ];
    }

    function write(name: string): string {
        fixture.writeFile("in " + name.slice(0, 60) + "/" + name + ".kvt");
        return fixture.tempPath("in " + name.slice(0, 60) + "/" + name + ".kvt");
    }

    // The paths of the window's dialogs and drops come without their leading slash.
    function shownPath(path: string): string {
        return path.slice(1);
    }

    function rowOf(list: var, row: int): var {
        list.positionViewAtIndex(row, ListView.Contain);
        render();
        return list.itemAtIndex(row);
    }
}
