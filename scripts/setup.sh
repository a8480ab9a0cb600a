#!/usr/bin/env bash
# Installs the Debian packages that are missing. Does nothing, and touches no network, when all are there.
#   scripts/setup.sh run [PACKAGE...]   what building and running KVT Editor needs, and the packages named
#   scripts/setup.sh [PACKAGE...]       what testing needs, too
# The names are those of Debian 12, 13 and sid.
set -euo pipefail

packages=(
  # compiler and tools
  build-essential cmake ninja-build pkg-config openssl
  # libraries
  qt6-base-dev qt6-declarative-dev qt6-declarative-dev-tools libgl-dev libxcb1-dev
  libcpp-httplib-dev libssl-dev zlib1g-dev
  # the QML modules that the views import; on Debian 12 none of them depends on another
  qml6-module-qtqml qml6-module-qtqml-models qml6-module-qtqml-workerscript qml6-module-qtquick
  qml6-module-qtquick-controls qml6-module-qtquick-dialogs qml6-module-qtquick-layouts
  qml6-module-qtquick-templates qml6-module-qtquick-window qml6-module-qt-labs-folderlistmodel
  # make the manual
  weasyprint python3-markdown
  # run time: TLS roots, window system plug-ins, fonts, the default handler of a desktop
  ca-certificates qt6-qpa-plugins fontconfig fonts-dejavu-core xdg-utils
  # native file dialogs, which choose several files at once: GTK's, and the desktop portal's
  qt6-gtk-platformtheme qt6-xdgdesktopportal-platformtheme
)
if [[ ${1-} == run ]]; then
  shift
else
  packages+=(
    # the second compiler, its sanitizers and what names their addresses, a fast linker, checks of the sources
    clang libclang-rt-dev llvm lld clang-format clang-tidy clazy shellcheck git
    # libraries and the QML module of the tests and benchmarks
    libx11-dev libbenchmark-dev qml6-module-qttest
    # a display for the tests that want a real window
    xvfb xauth openbox xdotool x11-utils
    # the accessibility bus, and a client that looks at the program through it
    dbus at-spi2-core python3-gi gir1.2-atspi-2.0
    # the package: icons, and checks of its files; lintian and debootstrap test it in a clean system
    librsvg2-bin desktop-file-utils appstream shared-mime-info man-db libxml2-utils file lintian debootstrap
    # reads the manual's pages back
    poppler-utils
  )
fi
packages+=("$@")

if ! command -v apt-get >/dev/null 2>&1; then
  printf 'setup: without apt-get nothing is installed here; needed is what these Debian packages hold:\n' >&2
  printf '  %s\n' "${packages[@]}" >&2
  exit 0
fi

missing=()
for package in "${packages[@]}"; do
  state=$(dpkg-query -W -f='${db:Status-Abbrev}' "$package" 2>/dev/null || true)
  [[ $state == ii* ]] || missing+=("$package")
done
if ((${#missing[@]} == 0)); then
  exit 0
fi

as_root=()
if ((EUID != 0)); then
  if command -v sudo >/dev/null 2>&1 && { [[ -t 0 ]] || sudo -n true 2>/dev/null; }; then
    as_root=(sudo)
  else
    printf 'setup: these packages are missing, and this user may not install them:\n' >&2
    printf '  %s\n' "${missing[@]}" >&2
    printf 'setup: as root, run: apt-get install --no-install-recommends %s\n' "${missing[*]}" >&2
    exit 1
  fi
fi

printf 'setup: installing %s\n' "${missing[*]}" >&2
"${as_root[@]}" apt-get update -q
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends "${missing[@]}"
