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

ls -l "$top"/docs/*.png
