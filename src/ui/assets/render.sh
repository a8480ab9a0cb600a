#!/usr/bin/env bash
# Makes the pictures that the program carries from their drawings: vox-logo.png, kvtedit.ico and the icons of
# the tools.
# Needs rsvg-convert (Debian: librsvg2-bin) and python3.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")"
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

rsvg-convert --width 800 --output vox-logo.png vox-logo.svg

# Three times the size at which they are shown, for displays with small pixels.
for drawing in tools/*.svg; do
  rsvg-convert --width 180 --height 180 --output "${drawing%.svg}.png" "$drawing"
done

sizes=(16 24 32 48 64 128 256)
for size in "${sizes[@]}"; do
  rsvg-convert --width "$size" --height "$size" --output "$scratch/$size.png" kvtedit.svg
done

# An icon file is a directory of its pictures, then the pictures themselves; a size of 256 is written as 0.
python3 - "$scratch" "${sizes[@]}" >kvtedit.ico <<'PACK'
import pathlib
import struct
import sys

scratch, *sizes = sys.argv[1:]
images = [(int(size), pathlib.Path(scratch, size + ".png").read_bytes()) for size in sizes]
out = sys.stdout.buffer
out.write(struct.pack("<HHH", 0, 1, len(images)))
offset = 6 + 16 * len(images)
for size, data in images:
    out.write(struct.pack("<BBBBHHII", size % 256, size % 256, 0, 0, 1, 32, len(data), offset))
    offset += len(data)
for _, data in images:
    out.write(data)
PACK
