#!/bin/sh
# Whatever is shown is plain text: in each file, every item that shows a text says so (a VOXLabel need not), and every
# control that would show its text by a label of Qt's has a content of its own, or an icon.
# usage: check-plain-text.sh FOLDER-OF-QML-FOLDERS
set -eu
if [ $# -ne 1 ] || [ ! -d "$1" ]; then
    sed -n 's/^# usage/usage/p' "$0" >&2
    exit 2
fi

control='((Tool|Round|Tab|Delay|Radio)?Button|CheckBox|Switch|(Item|Check|Radio|Switch|Swipe)Delegate|Menu(Bar)?Item'
control="$control|ToolTip|ComboBox|GroupBox)"
shown=0
faults=0
for file in "$1"/*/*.qml; do
    count() { grep -cE "(^|[ :])$1" "$file" || true; }
    texts=$(count '(Text|Label|TextEdit|TextArea) \{')
    plain=$(count ' textFormat: (Text|TextEdit)\.PlainText$')
    controls=$(count "$control \\{")
    contents=$(count ' (contentItem|icon\.source): ')
    if [ "$texts" -ne "$plain" ] || [ "$controls" -gt "$contents" ]; then
        echo "$file: $plain of $texts texts are plain, $contents of $controls controls have a content of their own"
        faults=1
    fi
    shown=$((shown + texts))
done
if grep -nE '\.(Auto|Rich|Styled|Markdown)Text|ToolTip\.(text|show)|QtQuick\.Controls\.impl' "$1"/*/*.qml; then
    faults=1
fi
echo "$shown texts"
[ "$shown" -ge 15 ] && [ "$faults" -eq 0 ]
