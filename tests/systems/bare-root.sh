#!/usr/bin/env bash
# Makes a bare Debian, with nothing in it but what every Debian has.
#   bare-root.sh SUITE FOLDER   SUITE is bookworm, trixie, sid and so on; FOLDER must not exist yet
# Needs root, debootstrap, and the archive that this machine's own apt uses. Keeps what it fetched in build/systems.
set -euo pipefail

suite=$1
root=$2
top=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
kept=$top/build/systems
archive=$kept/$suite.tar

if ((EUID != 0)); then
  echo "bare-root: only root can make a bare Debian" >&2
  exit 1
fi
mkdir -p "$kept"

mirror=$(apt-get indextargets --format "\$(ORIGIN) \$(REPO_URI)" 'Identifier: Packages' \
  | sed -n 's/^Debian //p' | grep -v security | sort | uniq -c | sort -rn | awk 'NR == 1 { print $2 }')
if [[ -z $mirror ]]; then
  echo "bare-root: apt on this machine does not use Debian's archive; apt-get update may help" >&2
  exit 1
fi
if [[ ! -s $archive ]]; then
  new=$(mktemp -d "$kept/$suite.XXXXXX")
  if ! debootstrap --variant=minbase "$suite" "$new" "$mirror" >"$kept/$suite.log" 2>&1; then
    tail -n 30 "$kept/$suite.log" >&2
    rm -rf --one-file-system "$new"
    exit 1
  fi
  tar -C "$new" -cf "$archive.new" .
  mv "$archive.new" "$archive"
  rm -rf --one-file-system "$new"
fi

mkdir "$root"
tar -C "$root" -xf "$archive"
# The archive was made from a mktemp folder, which only root may enter.
chmod 755 "$root"
cp -L /etc/resolv.conf "$root/etc/resolv.conf"
apt-config dump | grep -E '^Acquire::(https?::)?(Proxy|Retries)' >"$root/etc/apt/apt.conf.d/10host" || true
# The index of sid is older than it claims to be valid on some mirrors.
echo 'Acquire::Check-Valid-Until "false";' >"$root/etc/apt/apt.conf.d/20dates"
# No daemon is started by an installation.
printf '#!/bin/sh\nexit 101\n' >"$root/usr/sbin/policy-rc.d"
chmod 755 "$root/usr/sbin/policy-rc.d"
