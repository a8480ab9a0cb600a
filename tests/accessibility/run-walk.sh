#!/usr/bin/env bash
# Runs the walk in a session of its own: home, display, session bus, and with it the accessibility bus.
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT
mkdir -m 700 "$home/run"
export HOME=$home TMPDIR=$home XDG_RUNTIME_DIR=$home/run XDG_CONFIG_HOME=$home/config XDG_DATA_HOME=$home/data \
  XDG_CACHE_HOME=$home/cache
unset DBUS_SESSION_BUS_ADDRESS AT_SPI_BUS_ADDRESS NO_AT_BRIDGE WAYLAND_DISPLAY
# The Python that Debian's packages of the accessibility library are made for, whatever else is installed.
"$here/../e2e/with-display.sh" dbus-run-session -- /usr/bin/python3 -B "$here/walk.py" "$@"
