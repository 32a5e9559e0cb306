#!/usr/bin/env bash
# Makes the pictures in docs/ from the running program: the window tests,
# on a private X server and session bus with a test tray, save them when
# QUILLSTASH_SCREENSHOT_DIR names a folder.
set -euo pipefail

top=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$top/build}

cmake --build "$build" --target test_desktop quillstash -j2

runtime=$(mktemp -d)
chmod 700 "$runtime"
trap 'rm -rf "$runtime"' EXIT
export XDG_RUNTIME_DIR=$runtime
unset DBUS_SESSION_BUS_ADDRESS DISPLAY WAYLAND_DISPLAY

mkdir -p "$top/docs"
QUILLSTASH_SCREENSHOT_DIR="$top/docs" \
  dbus-run-session --config-file="$top/tests/dbus-session.conf" -- \
  xvfb-run -a -s "-screen 0 1280x1024x24 -nolisten tcp" \
  "$build/tests/test_desktop" --gtest_filter='WindowTest.*'

# The Edit menu with the fixed phrases of a user who has set two.
QUILLSTASH_BIN=$build/quillstash dbus-run-session --config-file="$top/tests/dbus-session.conf" -- \
  xvfb-run -a -s "-screen 0 1280x1024x24 -nolisten tcp" bash -c '
    export HOME=$(mktemp -d); export XDG_CONFIG_HOME=$HOME/.config
    mkdir -p "$XDG_CONFIG_HOME/Quillstash"
    printf "[General]\nphrase_title2=Greeting\nphrase_content2=Hello there\nphrase_title5=Signature\nphrase_content5=-- Ada\n" \
      > "$XDG_CONFIG_HOME/Quillstash/Quillstash.conf"
    "$QUILLSTASH_BIN" >/dev/null 2>&1 & pid=$!
    sleep 2
    xdotool key alt+e; sleep 0.5; xdotool key Up Up; sleep 0.3; xdotool key Right; sleep 0.5
    import -window root -crop 700x260+0+0 +repage "$1"
    kill $pid; wait' _ "$top/docs/phrase-menu.png"

# The quit alert, after a capture.
QUILLSTASH_BIN=$build/quillstash dbus-run-session --config-file="$top/tests/dbus-session.conf" -- \
  xvfb-run -a -s "-screen 0 1280x1024x24 -nolisten tcp" bash -c '
    export HOME=$(mktemp -d); export XDG_CONFIG_HOME=$HOME/.config
    "$QUILLSTASH_BIN" >/dev/null 2>&1 & pid=$!
    sleep 2
    printf "Meeting notes for Tuesday" | xclip -selection clipboard; sleep 2.5
    xdotool windowfocus --sync "$(xdotool search --onlyvisible --name "^Untitled" | head -1)"; xdotool key ctrl+q; sleep 1
    import -window "$(xdotool search --onlyvisible --name "^Warning$" | head -1)" "$1"
    kill -9 $pid; wait' _ "$top/docs/quit-alert.png"

ls -l "$top"/docs/*.png
