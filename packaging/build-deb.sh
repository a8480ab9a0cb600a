#!/usr/bin/env bash
# Builds the Debian package and prints its path.
#   packaging/build-deb.sh [BUILD]   builds in the folder BUILD, by default build/deb, and leaves the package there
# Settings of a deployment go into KVTEDITOR_CMAKE_OPTIONS, for instance -DKVTEDITOR_API_BASE=https://...
set -euo pipefail

top=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=$(realpath -m "${1:-$top/build/deb}")
read -ra options <<<"${KVTEDITOR_CMAKE_OPTIONS-}"
cd "$top"

# Hardened as Debian's own packages are, and without a trace of where it was built.
export DEB_BUILD_MAINT_OPTIONS=hardening=+all DEB_CXXFLAGS_MAINT_STRIP=-g
# The same bytes whenever it is built. Not wherever: the order in which Qt 6.4 compiles QML depends on the path.
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
