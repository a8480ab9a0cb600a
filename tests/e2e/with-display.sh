#!/usr/bin/env bash
# Runs a command on a display of its own, with a window manager, and ends both afterwards. KVTEDITOR_SCREEN is its size.
set -euo pipefail

work=$(mktemp -d)
display_server=
manager=
finish() {
  [[ -z $manager ]] || kill "$manager" 2>/dev/null || true
  [[ -z $display_server ]] || kill "$display_server" 2>/dev/null || true
  rm -rf "$work"
}
trap finish EXIT

mkfifo "$work/number"
Xvfb -displayfd 3 -screen 0 "${KVTEDITOR_SCREEN:-1600x1000}x24" -nolisten tcp -noreset 3>"$work/number" 2>/dev/null &
display_server=$!
read -r number <"$work/number"
# A desktop portal of this machine must not put its own file dialogs in place of ours.
export DISPLAY=:$number DBUS_SESSION_BUS_ADDRESS=disabled:
HOME=$work openbox >/dev/null 2>&1 &
manager=$!
# What a window asks of its manager before there is one is lost.
tries=0
until xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep 'window id' >/dev/null; do
  ((++tries < 5000)) || { echo "with-display: no window manager came up" >&2; exit 1; }
done
"$@"
