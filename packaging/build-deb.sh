#!/usr/bin/env bash
# Builds the Debian package and prints its path.
#   packaging/build-deb.sh [BUILD]   builds in the folder BUILD, by default build/deb, and leaves the package there
# Settings of a deployment go into KVTEDITOR_CMAKE_OPTIONS, for instance -DKVTEDITOR_API_BASE=https://...
set -euo pipefail

top=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=$(realpath -m "${1:-$top/build/deb}")
read -ra options <<<"${KVTEDITOR_CMAKE_OPTIONS-}"

# The same bytes wherever it is built: qmlcachegen declares variables in the order of addresses in its memory. So these
# are not randomized, and the folders have fixed paths, in mounts of this process alone.
user=()
((EUID == 0)) || user=(--map-root-user)
may_mount() {
  [[ $top/ != /mnt/* && $build/ != /mnt/* ]] \
    && unshare --mount "${user[@]}" -- setarch --addr-no-randomize mount -t tmpfs tmpfs /mnt 2>/dev/null
}
if [[ -z ${KVTEDITOR_FIXED_PATHS-} ]] && ! may_mount; then
  echo "build-deb: no mounts of its own are allowed here, so the package's bytes depend on the folder" >&2
elif [[ -z ${KVTEDITOR_FIXED_PATHS-} ]]; then
  mkdir -p "$build"
  cd "$top"
  # shellcheck disable=SC2016 # expands in the inner shell
  KVTEDITOR_FIXED_PATHS=1 unshare --mount "${user[@]}" -- bash -c '
    set -e
    mount -t tmpfs -o mode=755 tmpfs /mnt
    mkdir /mnt/kvteditor /mnt/build
    mount --bind "$1" /mnt/kvteditor
    mount --bind "$2" /mnt/build
    exec setarch --addr-no-randomize /mnt/kvteditor/packaging/build-deb.sh /mnt/build' build-deb "$top" "$build" >/dev/null
  ls "$build"/kvteditor_*.deb
  exit
fi
cd "$top"

# Hardened as Debian's own packages are, and without a trace of where it was built.
export DEB_BUILD_MAINT_OPTIONS=hardening=+all DEB_CXXFLAGS_MAINT_STRIP=-g
# The same bytes whenever it is built.
SOURCE_DATE_EPOCH=$(dpkg-parsechangelog --file packaging/debian/changelog --show-field Timestamp)
# Qt's tools write what a hash table holds in an order that this seeds.
export SOURCE_DATE_EPOCH QT_HASH_SEED=0
cxx_flags="$(dpkg-buildflags --get CPPFLAGS) $(dpkg-buildflags --get CXXFLAGS) -ffile-prefix-map=$build=. -ffile-prefix-map=$top=."
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=/usr \
  -DBUILD_TESTING=OFF \
  -DCMAKE_CXX_FLAGS="$cxx_flags" -DCMAKE_EXE_LINKER_FLAGS="$(dpkg-buildflags --get LDFLAGS)" \
  ${options[@]+"${options[@]}"} >&2
cmake --build "$build" --target kvteditor kvteditor_manual_pdf kvteditor_package_files -j "$(nproc)" >&2
rm -f "$build"/kvteditor_*.deb
(cd "$build" && umask 022 && cpack --config CPackConfig.cmake) >&2
ls "$build"/kvteditor_*.deb
