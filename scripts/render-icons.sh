#!/usr/bin/env bash
# Renders the application icon (packaging/icons/quillstash.svg) to the PNG
# sizes of the hicolor theme. The PNGs are committed, so that building and
# packaging need no SVG renderer; run this again after changing the drawing.
# Needs rsvg-convert (Debian package librsvg2-bin).
set -euo pipefail

top=$(cd "$(dirname "$0")/.." && pwd)
icons=$top/packaging/icons
sizes=(16 22 24 32 48 64 128 256)

command -v rsvg-convert >/dev/null || { echo "rsvg-convert is missing: apt-get install librsvg2-bin" >&2; exit 1; }

for size in "${sizes[@]}"; do
  mkdir -p "$icons/${size}x${size}"
  rsvg-convert --width "$size" --height "$size" --format png \
    --output "$icons/${size}x${size}/quillstash.png" "$icons/quillstash.svg"
done
ls -l "$icons"/*x*/quillstash.png
