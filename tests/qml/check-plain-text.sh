#!/bin/sh
# Whatever is shown is plain text: every item that shows a text is a VOXLabel or says so, and every control that would
# put its text into a label of Qt's own brings one of ours.
# usage: check-plain-text.sh FOLDER-OF-QML-FILES
set -eu
if [ $# -ne 1 ] || [ ! -d "$1" ]; then
    sed -n 's/^# usage/usage/p' "$0" >&2
    exit 2
fi

# shellcheck disable=SC2016 # the fields are for awk
find "$1" -name '*.qml' | sort | xargs -d '\n' awk '
function complain(what) {
    printf "%s:%d: %s\n", FILENAME, FNR, what
    faults++
}

function finish(object) {
    if (object ~ /^(Text|Label|TextEdit|TextArea)$/) {
        texts++
        if (!plain[depth])
            complain("a " object " that is not said to be plain text ends here")
    } else if (object == "VOXLabel") {
        texts++
        if (plain[depth])
            complain("a VOXLabel that sets textFormat ends here")
    } else if (object in labelled) {
        controls++
        if (!content[depth] && (text[depth] || !icon[depth]))
            complain("a " object " with a label of Qt ends here")
    }
}

BEGIN {
    split("Button ToolButton RoundButton TabButton DelayButton RadioButton CheckBox Switch ItemDelegate " \
        "CheckDelegate RadioDelegate SwitchDelegate SwipeDelegate MenuItem MenuBarItem ToolTip ComboBox GroupBox", names, " ")
    for (i in names)
        labelled[names[i]] = 1
}

FNR == 1 { depth = 0 }

/^ *\/\// { next }

/(Text|TextEdit|Label)\.(AutoText|RichText|StyledText|MarkdownText)/ { complain("a text that takes tags") }
/ToolTip\.(text|show)|QtQuick\.Controls\.impl/ { complain("a label of Qt") }

# An object begins: "Type {", "property: Type {" or "component Name: Type {".
match($0, /[A-Z][A-Za-z]* \{/) && $0 !~ /^ *(if|for|while|function|readonly property|property) / {
    type = substr($0, RSTART, RLENGTH - 2)
    if ($0 ~ /\}$/) {
        if (type ~ /^(Text|Label|TextEdit|TextArea|VOXLabel)$/ || type in labelled)
            complain("a " type " in one line: its properties are not seen")
    } else if ($0 ~ /\{$/) {
        match($0, /^ */)
        depth++
        indent[depth] = RLENGTH
        kind[depth] = type
        if ($0 ~ /^ *contentItem: /) content[depth - 1] = 1
        plain[depth] = content[depth] = text[depth] = icon[depth] = 0
        next
    }
}

depth > 0 {
    match($0, /^ */)
    if (RLENGTH == indent[depth] && $0 ~ /^ *\}/) {
        finish(kind[depth])
        depth--
    } else if (RLENGTH == indent[depth] + 4) {
        if ($0 ~ /^ *textFormat: (Text|TextEdit)\.PlainText$/) plain[depth] = 1
        if ($0 ~ /^ *text: /) text[depth] = 1
        if ($0 ~ /^ *icon\.source: /) icon[depth] = 1
    }
}

END {
    printf "%d texts, %d controls\n", texts, controls
    if (texts < 40 || controls < 6)
        complain("this check sees too little")
    exit faults > 0
}'
