#!/usr/bin/env bash
# What the tools of other formats do not look for in the files of the package.
#   check-files.sh VERSION
set -euo pipefail

version=$1
top=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
id=example.vox.KvtEditor
cd "$top/packaging"
bad=0
complain() {
  echo "check-files: $*" >&2
  bad=1
}
expect() {
  [[ $2 == "$3" ]] || complain "$1: \"$2\" instead of \"$3\""
}

# One version everywhere.
IFS=' ()' read -r _ debian_version _ <debian/changelog
expect "version in the Debian changelog" "${debian_version%-*}" "$version"
expect "version in the metainfo" "$(xmllint --xpath 'string(//release[1]/@version)' $id.metainfo.xml)" "$version"
expect "version in the man page" "$(sed -n '1s/.*"KVT Editor \([^"]*\)".*/\1/p' kvteditor.1)" "$version"

# The man page, without a word from its formatter.
LC_ALL=C.UTF-8 man --warnings -E UTF-8 -l -Tutf8 -Z ./kvteditor.1 2>"$work/warnings" >/dev/null \
  || complain "the man page is refused"
[[ ! -s $work/warnings ]] || complain "the man page: $(<"$work/warnings")"

# Every picture of the metainfo is one of the manual's.
mapfile -t pictures < <(xmllint --xpath '//screenshot/image/text()' $id.metainfo.xml)
((${#pictures[@]} > 0)) || complain "the metainfo shows no pictures"
for address in "${pictures[@]}"; do
  [[ -f ../docs/pictures/${address##*/} ]] || complain "there is no picture $address"
done

# The type of tune files: what the desktop makes of it has that one pattern.
mkdir -p "$work/mime/packages"
cp $id.mime.xml "$work/mime/packages/"
XDG_DATA_DIRS=$work update-mime-database "$work/mime" 2>"$work/warnings" || complain "the type is refused"
[[ ! -s $work/warnings ]] || complain "the type: $(<"$work/warnings")"
expect "patterns of the type" "$(grep -v '^#' "$work/mime/globs2")" "50:application/x-kvt-tune:*.kvt"
expect "types of the desktop entry" "$(sed -n 's/^MimeType=//p' $id.desktop)" "application/x-kvt-tune;"
expect "command of the desktop entry" "$(sed -n 's/^Exec=//p' $id.desktop)" "kvteditor %f"
expect "working folder of the desktop entry" "$(sed -n 's/^Path=//p' $id.desktop)" "/"
((bad == 0))
