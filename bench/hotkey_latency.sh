#!/bin/bash
# Hot key latency of the running program, on a private X server and bus:
#   bench/hotkey_latency.sh [BUILD_DIR] [PRESSES]
# Three texts are copied, then Ctrl+Alt+1 and Ctrl+Alt+2 are pressed in turn
# (100 presses unless told), so that every press changes the clipboard; each
# is timed from the XTEST press until another client has read the restored
# text (bench_hotkey_latency).
set -euo pipefail
BUILD=$(realpath "${1:-build}")
PRESSES=${2:-100}
HERE=$(dirname "$(realpath "$0")")
if [ -z "${QUILLSTASH_BENCH_INNER:-}" ]; then
  export XDG_RUNTIME_DIR=$(mktemp -d); chmod 700 "$XDG_RUNTIME_DIR"
  unset DBUS_SESSION_BUS_ADDRESS DISPLAY WAYLAND_DISPLAY
  QUILLSTASH_BENCH_INNER=1 exec dbus-run-session --config-file="$HERE/../tests/dbus-session.conf" -- \
    xvfb-run -a -s "-screen 0 1280x1024x24 -nolisten tcp" "$0" "$BUILD" "$PRESSES"
fi

WORK=$(mktemp -d)
trap 'kill $(jobs -p) 2>/dev/null || true; rm -rf "$WORK"' EXIT
export HOME=$WORK XDG_CONFIG_HOME=$WORK/.config QT_QPA_PLATFORM=xcb
echo 'pcm.!default { type null }' > "$WORK/.asoundrc"

"$BUILD/quillstash" >/dev/null 2>&1 &
sleep 3
# The tick records one copy a second.
for text in first second third; do
  printf %s "$text" | xclip -selection clipboard
  sleep 1.5
done
"$BUILD/bench/bench_hotkey_latency" second first "$PRESSES"
