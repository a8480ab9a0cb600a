#!/usr/bin/env bash
# Installs a build into a scratch folder, compares what is there with what should be, and starts the program from
# it.
#   check-tree.sh CMAKE BUILD DEVSERVICE PROBE HAS_PICTURES
# HAS_PICTURES is 1 when the build makes icons of fixed sizes.
set -euo pipefail

cmake=$1
build=$2
devservice=$3
probe=$4
has_pictures=$5
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
id=example.vox.KvtEditor
manual=KVT_File_Editor_2026_User_Manual.pdf

expected() {
  cat <<LIST
d755 etc
d755 etc/kvteditor
f644 etc/kvteditor/service.json
d755 usr
d755 usr/bin
l777 usr/bin/kvteditor -> ../lib/kvteditor/kvteditor
d755 usr/lib
d755 usr/lib/kvteditor
f644 usr/lib/kvteditor/$manual
f755 usr/lib/kvteditor/kvteditor
l777 usr/lib/kvteditor/service.json -> /etc/kvteditor/service.json
d755 usr/share
d755 usr/share/applications
f644 usr/share/applications/$id.desktop
d755 usr/share/doc
d755 usr/share/doc/kvteditor
l777 usr/share/doc/kvteditor/$manual -> ../../../lib/kvteditor/$manual
f644 usr/share/doc/kvteditor/changelog.Debian.gz
f644 usr/share/doc/kvteditor/changelog.gz
f644 usr/share/doc/kvteditor/copyright
d755 usr/share/icons
d755 usr/share/icons/hicolor
d755 usr/share/icons/hicolor/scalable
d755 usr/share/icons/hicolor/scalable/apps
f644 usr/share/icons/hicolor/scalable/apps/$id.svg
d755 usr/share/man
d755 usr/share/man/man1
f644 usr/share/man/man1/kvteditor.1.gz
d755 usr/share/metainfo
f644 usr/share/metainfo/$id.metainfo.xml
d755 usr/share/mime
d755 usr/share/mime/packages
f644 usr/share/mime/packages/$id.xml
LIST
  ((has_pictures)) || return 0
  for size in 16 22 24 32 48 64 128 256 512; do
    cat <<LIST
d755 usr/share/icons/hicolor/${size}x$size
d755 usr/share/icons/hicolor/${size}x$size/apps
f644 usr/share/icons/hicolor/${size}x$size/apps/$id.png
LIST
  done
}

install_to() {
  (umask 002 && DESTDIR=$1 "$cmake" --install "$build" --prefix "$2" >"$work/log") || {
    cat "$work/log" >&2
    return 1
  }
}

bad=0
install_to "$work/root" /usr
installed() {
  find "$1" -mindepth 1 \( -type l -printf 'l777 %P -> %l\n' -o -printf '%y%m %P\n' \)
}
diff -u --label "expected" --label "installed" <(expected | LC_ALL=C sort -k 2) \
  <(installed "$work/root" | LC_ALL=C sort -k 2) || bad=1

if ((has_pictures)); then
  for picture in "$work"/root/usr/share/icons/hicolor/*x*/apps/"$id.png"; do
    size=$(basename "$(dirname "$(dirname "$picture")")")
    file "$picture" | grep -q "PNG image data, ${size/x/ x }," || { echo "$picture has another size" >&2; bad=1; }
  done
fi

# A second install keeps what an administrator wrote.
echo '{ "placeholderEmail": "desk@vox-editor.invalid" }' >"$work/root/etc/kvteditor/service.json"
install_to "$work/root" /usr
grep -q desk@ "$work/root/etc/kvteditor/service.json" || { echo "the service file was written over" >&2; bad=1; }

# Below any other folder it is one piece, which may be moved.
install_to "" "$work/first"
mv "$work/first" "$work/moved"
broken=$(find "$work/moved" -xtype l)
[[ -z $broken ]] || { printf 'links lead nowhere: %s\n' "$broken" >&2; bad=1; }
"$here/check-start.sh" "$devservice" "$probe" "$work/moved/bin/kvteditor" || bad=1
((bad == 0))
