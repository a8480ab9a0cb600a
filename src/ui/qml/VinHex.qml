pragma Singleton

import QtQml

// Turns characters into the digits of their codes, and back.
QtObject {
    function hexOf(text: string): string {
        const codes = [];
        for (let at = 0; at < text.length;) {
            const code = text.codePointAt(at);
            codes.push(digits(code));
            at += String.fromCodePoint(code).length;
        }
        return codes.join(" ");
    }

    // A digit without its partner at the end is dropped.
    function asciiOf(hex: string): string {
        const pairs = hex.replace(/[^0-9A-Fa-f]/g, "").match(/../g) ?? [];
        return pairs.map(pair => String.fromCharCode(parseInt(pair, 16))).join("");
    }

    function digits(code: int): string {
        return code.toString(16).toUpperCase().padStart(2, "0");
    }
}
