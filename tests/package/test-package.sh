#!/usr/bin/env bash
# Builds the Debian package, lets lintian judge it, installs it into a clean minimal Debian with apt and nothing
# that is merely recommended, starts the program there, and takes it away again.
#   tests/package/test-package.sh [BUILD]   BUILD is a configured build with the tests, by default build/release
# Needs root and the network, for Debian's archive: the one that this machine's own apt uses.
set -euo pipefail

if ((EUID != 0)); then
  echo "test-package: only root can make a clean system" >&2
  exit 1
fi
# Mounts made in here end with the script, however it ends.
if [[ -z ${KVTEDITOR_OWN_MOUNTS-} ]]; then
  exec env KVTEDITOR_OWN_MOUNTS=1 unshare --mount --propagation private -- "${BASH_SOURCE[0]}" "$@"
fi

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
top=$(cd "$here/../.." && pwd)
build=$(realpath "${1:-$top/build/release}")
work=$(mktemp -d)
root=$work/root
finish() {
  umount --lazy "$root/proc" 2>/dev/null || true
  rm -rf --one-file-system "$work"
}
trap finish EXIT

step() { printf '\n== %s\n' "$*"; }

step "build the package"
cmake --build "$build" --target kvteditor_devservice_program kvteditor_window_probe
package=$("$top/packaging/build-deb.sh" "$build/deb")
dpkg-deb --info "$package"
dpkg-deb --contents "$package"

step "hardened"
"$here/check-hardening.sh" "$build/deb/kvteditor" "$top"

step "lintian"
# The package is not in Debian, so its changelog has no bug to close.
lintian --allow-root --fail-on error,warning --suppress-tags initial-upload-closes-no-bugs --info "$package"

step "nothing tells where it was built"
dpkg-deb --extract "$package" "$work/unpacked"
if grep --recursive --text --files-with-matches --fixed-strings -e "$top" -e "$build" -e /mnt/ "$work/unpacked"; then
  echo "test-package: these files name the folder of the build" >&2
  exit 1
fi

step "the same bytes from another folder at another time"
mkdir "$work/another folder"
tar -C "$top" --exclude=./build --exclude=./.git -c . | tar -C "$work/another folder" -x
again=$("$work/another folder/packaging/build-deb.sh" "$work/another build")
cmp "$package" "$again"

step "a clean system"
suite=$(apt-get indextargets --format "\$(ORIGIN) \$(RELEASE)" 'Identifier: Packages' | sed -n 's/^Debian //p' | sort | head -n 1)
"$here/../systems/bare-root.sh" "$suite" "$root"
mount -t proc proc "$root/proc"
in_root() {
  chroot "$root" /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LANG=C.UTF-8 DEBIAN_FRONTEND=noninteractive "$@"
}

step "install"
cp "$package" "$root/tmp/"
in_root apt-get update -q
in_root apt-get install -y -q -o Dpkg::Use-Pty=0 --no-install-recommends "/tmp/$(basename "$package")"
complaints=$(in_root dpkg --audit; in_root dpkg --verify kvteditor)
if [[ -n $complaints ]]; then
  printf 'test-package: dpkg complains: %s\n' "$complaints" >&2
  exit 1
fi
printf '%s packages in the clean system\n' "$(in_root dpkg-query -W -f '.\n' | wc -l)"

step "start"
in_root kvteditor --version
"$here/check-start.sh" "$build/devservice/kvteditor-devservice" "$build/tests/package/libkvteditor_window_probe.so" \
  kvteditor "$root"
# HELP hands this file to the desktop.
head -c 5 "$root/usr/lib/kvteditor/KVT_File_Editor_2026_User_Manual.pdf" | grep -q '%PDF-'

step "remove"
in_root apt-get purge -y -q -o Dpkg::Use-Pty=0 kvteditor
left=$(find "$root/usr" "$root/etc" -iname '*kvteditor*' -print)
if [[ -n $left ]]; then
  printf 'test-package: left behind: %s\n' "$left" >&2
  exit 1
fi
printf '\ntest-package: all is well with %s\n' "$package"
