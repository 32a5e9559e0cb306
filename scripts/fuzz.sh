#!/usr/bin/env bash
# Fuzzes the backup file reader with libFuzzer, ASan and UBSan.
#   scripts/fuzz.sh [seconds]      (default 30; CI runs 20, a developer may run hours)
# Builds only the fuzz target, in a build of its own made with clang, and runs
# it over a working copy of the seed corpus in tests/documents/corpus, which
# grows from run to run; the seeds themselves are never changed. Fails on any
# crash, leak, sanitizer report or time-out, leaving the input in
# $FUZZ_BUILD_DIR/artifacts.
set -euo pipefail

seconds=${1:-30}
top=$(cd "$(dirname "$0")/.." && pwd)
build=${FUZZ_BUILD_DIR:-$top/build-fuzz}
seeds=$top/tests/documents/corpus

# The Debian toolchain, whatever else (pyenv, cargo, local installs) the PATH holds.
export PATH=/usr/bin:/bin:$PATH
export CC=clang CXX=clang++
sanitizers="-fsanitize=address,undefined -fno-sanitize-recover=all -fsanitize=fuzzer-no-link"

mkdir -p "$build"
cmake -S "$top" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQUILLSTASH_FUZZ=ON -DBUILD_TESTING=OFF \
  -DCMAKE_CXX_FLAGS="$sanitizers -fno-omit-frame-pointer" >"$build/configure.log" 2>&1 \
  || { cat "$build/configure.log"; exit 1; }
cmake --build "$build" --target backupfile_fuzz -j "$(nproc)" >"$build/build.log" 2>&1 \
  || { tail -n 60 "$build/build.log"; exit 1; }
rm -f "$build/configure.log" "$build/build.log"

corpus=$build/corpus
mkdir -p "$corpus" "$build/artifacts"
if [ -d "$seeds" ]; then
  cp -n "$seeds"/* "$corpus"/ 2>/dev/null || true
fi

log=$build/fuzz.log
export QT_QPA_PLATFORM=offscreen
unset DISPLAY WAYLAND_DISPLAY
if "$build/fuzz/backupfile_fuzz" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=4096 \
  -artifact_prefix="$build/artifacts/" "$corpus" >"$log" 2>&1; then
  echo "fuzz: backupfile_fuzz ran ${seconds} s without a fault ($(grep -o 'Done [0-9]* runs' "$log" || echo '? runs'); corpus $(ls "$corpus" | wc -l) files)"
else
  tail -n 80 "$log"
  echo "fuzz: backupfile_fuzz FAILED; the input is in $build/artifacts" >&2
  exit 1
fi
