#!/usr/bin/env bash
# Runs the clipboard reader's and the sound player's tests under
# ThreadSanitizer: the reader's worker thread, the sound threads and the
# preference they read.
#   scripts/tsan.sh
# Builds them with clang in a build of its own ($TSAN_BUILD_DIR, default
# build-tsan) and runs them on a private X server and session bus. Fails on
# any report; the reports are in $TSAN_BUILD_DIR/tsan.log.
set -euo pipefail

top=$(cd "$(dirname "$0")/.." && pwd)
build=${TSAN_BUILD_DIR:-$top/build-tsan}

# The Debian toolchain, whatever else (pyenv, local installs) the PATH holds.
export PATH=/usr/bin:/bin:$PATH
export CC=clang CXX=clang++
mkdir -p "$build"
cmake -S "$top" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCMAKE_CXX_FLAGS="-fsanitize=thread -fno-omit-frame-pointer" \
  -DCMAKE_EXE_LINKER_FLAGS="-fsanitize=thread" >"$build/configure.log" 2>&1 \
  || { cat "$build/configure.log"; exit 1; }
cmake --build "$build" --target test_recording test_platform -j "$(nproc)" >"$build/build.log" 2>&1 \
  || { tail -n 60 "$build/build.log"; exit 1; }

# Qt is not built with ThreadSanitizer: its own locks (futexes) are invisible
# to it, so what Qt hands between threads under them is taken on trust.
export TSAN_OPTIONS="suppressions=$top/scripts/tsan.supp second_deadlock_stack=1 halt_on_error=0 exitcode=66"
log=$build/tsan.log
: >"$log"

runtime=$(mktemp -d)
chmod 700 "$runtime"
trap 'rm -rf "$runtime"' EXIT
export XDG_RUNTIME_DIR=$runtime HOME=$runtime
unset DBUS_SESSION_BUS_ADDRESS DISPLAY WAYLAND_DISPLAY
printf 'pcm.!default { type null }\n' >"$HOME/.asoundrc"

# The reader's tests play the other clipboard owners on threads of their own;
# tests that start xclip through QProcess are left out, since the sanitizer's
# runtime aborts in the clone() that Qt starts processes with.
status=0
QT_QPA_PLATFORM=offscreen "$build/tests/test_recording" --gtest_filter='EventTimer*' >>"$log" 2>&1 || status=$?
dbus-run-session --config-file="$top/tests/dbus-session.conf" -- \
  xvfb-run -a -s "-screen 0 1280x1024x24 -nolisten tcp" \
  "$build/tests/test_platform" --gtest_filter='ClipboardReader*:CanberraSoundPlayer*' \
  >>"$log" 2>&1 || status=$?

reports=$(grep -c '^WARNING: ThreadSanitizer' "$log" || true)
tests=$(grep -oE '^\[  PASSED  \] [0-9]+ tests?' "$log" | awk '{s += $4} END {print s + 0}')
if [ "$status" -ne 0 ] || [ "$reports" -ne 0 ]; then
  grep -A 30 '^WARNING: ThreadSanitizer' "$log" | head -n 200 || tail -n 60 "$log"
  echo "tsan: $reports report(s), exit status $status; see $log" >&2
  exit 1
fi
echo "tsan: $tests tests passed under ThreadSanitizer without a report"
