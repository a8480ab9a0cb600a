#!/usr/bin/env bash
# Tries the checkout as a new user of another Debian would: clones it into a bare system with nothing but git, and
# runs the README's two scripts there with an empty home.
#   tests/systems/run.sh SUITE [COMMAND]   SUITE is bookworm, trixie, sid and so on
# COMMAND takes the place of the two scripts; it runs in the clone. Only what is committed is tried. The tour's
# pictures are left in build/systems/SUITE. Needs root and the archive that this machine's own apt uses.
set -euo pipefail

case ${1-} in
'' | -*)
  sed -n '2,6s/^# \{0,1\}//p' "${BASH_SOURCE[0]}"
  exit 2
  ;;
esac
if ((EUID != 0)); then
  echo "systems: only root can make a bare Debian" >&2
  exit 1
fi
# Mounts made in here end with the script, however it ends.
if [[ -z ${KVTEDITOR_OWN_MOUNTS-} ]]; then
  exec env KVTEDITOR_OWN_MOUNTS=1 unshare --mount --propagation private -- "${BASH_SOURCE[0]}" "$@"
fi

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
top=$(cd "$here/../.." && pwd)
suite=$1
command=${2-scripts/run.sh --tour build/tour && scripts/test.sh}
kept=$top/build/systems
"$top/scripts/setup.sh" run debootstrap

work=$(mktemp -d)
root=$work/root
finish() {
  umount --recursive --lazy "$root" 2>/dev/null || true
  rm -rf --one-file-system "$work"
}
trap finish EXIT

"$here/bare-root.sh" "$suite" "$root"
# Makes the root a mount point, so that a command in it can create its own mounts, as the package test does.
mount --bind "$root" "$root"
mount -t proc proc "$root/proc"
mount --rbind /dev "$root/dev"
# Keeps downloaded packages for the next run.
mkdir -p "$kept/$suite-archives"
mount --bind "$kept/$suite-archives" "$root/var/cache/apt/archives"
in_root() {
  chroot "$root" /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LANG=C.UTF-8 \
    DEBIAN_FRONTEND=noninteractive ${CI:+CI="$CI"} bash -c "$1"
}

in_root 'apt-get update -q && apt-get install -y -q --no-install-recommends git ca-certificates' >/dev/null
git clone --quiet --no-hardlinks "$top" "$root/root/kvteditor"
printf 'systems: %s: %s\n' "$suite" "$command"
started=$SECONDS
result=0
in_root "cd /root/kvteditor && { $command; }" </dev/null || result=$?
if [[ -d $root/root/kvteditor/build/tour ]]; then
  rm -rf "${kept:?}/$suite"
  cp -r "$root/root/kvteditor/build/tour" "$kept/$suite"
  printf 'systems: the pictures of the tour are in %s\n' "$kept/$suite"
fi
printf 'systems: %s ended with %d after %d s\n' "$suite" "$result" $((SECONDS - started))
((result == 0))
