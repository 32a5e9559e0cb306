#!/usr/bin/env bash
# Runs the whole test suite on a private desktop: an X server of its own
# (Xvfb) and a session bus of its own, so that neither the user's clipboard
# nor their notices are touched, and nothing the tests start outlives them.
set -euo pipefail

top=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$top/build}

runtime=$(mktemp -d)
chmod 700 "$runtime"
trap 'rm -rf "$runtime"' EXIT
export XDG_RUNTIME_DIR=$runtime
unset DBUS_SESSION_BUS_ADDRESS DISPLAY WAYLAND_DISPLAY

dbus-run-session --config-file="$top/tests/dbus-session.conf" -- \
  xvfb-run -a -s "-screen 0 1280x1024x24 -nolisten tcp" \
  ctest --test-dir "$build" --output-on-failure "$@"

# A short fuzzing run of the backup file reader; it needs no desktop.
"$top/scripts/fuzz.sh" 20
