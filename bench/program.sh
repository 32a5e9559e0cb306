#!/bin/bash
# Memory and idle CPU of the running program, on a private X server and bus:
#   bench/program.sh [BUILD_DIR]
# It loads 10,000 entries of 1 KB text from a backup file and reports what
# each entry adds to the resident memory, then what one 50 MB text copy adds,
# and the CPU time a minute of idling costs with that history and with none.
set -euo pipefail
BUILD=$(realpath "${1:-build}")
HERE=$(dirname "$(realpath "$0")")
if [ -z "${QUILLSTASH_BENCH_INNER:-}" ]; then
  export XDG_RUNTIME_DIR=$(mktemp -d); chmod 700 "$XDG_RUNTIME_DIR"
  unset DBUS_SESSION_BUS_ADDRESS DISPLAY WAYLAND_DISPLAY
  QUILLSTASH_BENCH_INNER=1 exec dbus-run-session --config-file="$HERE/../tests/dbus-session.conf" -- \
    xvfb-run -a -s "-screen 0 1280x1024x24 -nolisten tcp" "$0" "$BUILD"
fi

WORK=$(mktemp -d)
trap 'kill $(jobs -p) 2>/dev/null || true; rm -rf "$WORK"' EXIT
export HOME=$WORK XDG_CONFIG_HOME=$WORK/.config QT_QPA_PLATFORM=xcb
echo 'pcm.!default { type null }' > "$WORK/.asoundrc"
IDLE_SECONDS=${IDLE_SECONDS:-60}

rss_kb() { awk '/^VmRSS/ { print $2 }' "/proc/$1/status"; }
# CPU time of every thread, in ms, from the scheduler's nanosecond counts.
cpu_ms() { cat /proc/"$1"/task/*/schedstat | awk '{ ns += $1 } END { printf "%.1f", ns / 1e6 }'; }
# Starts the program (with a file, if given) and waits until it has settled.
start() {
  "$BUILD/quillstash" "$@" >/dev/null 2>&1 &
  PID=$!
  sleep 6
}
stop() { kill "$PID"; wait "$PID" 2>/dev/null || true; }

# The window shows the same rows in both runs (the newest ones), so the
# difference is what the 10,000 further entries cost.
"$BUILD/bench/bench_makebackup" "$WORK/small.qs_backup" 10 1024
"$BUILD/bench/bench_makebackup" "$WORK/history.qs_backup" 10010 1024

start
C0=$(cpu_ms "$PID"); sleep "$IDLE_SECONDS"; C1=$(cpu_ms "$PID")
echo "idle, empty history: $(echo "scale=1; ($C1 - $C0) * 60 / $IDLE_SECONDS" | bc) ms of CPU a minute"
stop

start "$WORK/small.qs_backup"
SMALL=$(rss_kb "$PID")
stop

start "$WORK/history.qs_backup"
LOADED=$(rss_kb "$PID")
echo "10,000 entries of 1 KB: $(( (LOADED - SMALL) * 1024 / 10000 )) bytes of resident memory each ($(( SMALL / 1024 )) MB with 10 entries, $(( LOADED / 1024 )) MB with 10,010)"
C0=$(cpu_ms "$PID"); sleep "$IDLE_SECONDS"; C1=$(cpu_ms "$PID")
echo "idle, 10,000 entries: $(echo "scale=1; ($C1 - $C0) * 60 / $IDLE_SECONDS" | bc) ms of CPU a minute"

BEFORE=$(rss_kb "$PID")
head -c $((50 * 1024 * 1024)) /dev/zero | tr '\0' 'q' | xclip -selection clipboard -i
sleep 8
AFTER=$(rss_kb "$PID")
echo "one 50 MB text copy: $(( (AFTER - BEFORE) / 1024 )) MB of resident memory"
stop
