#!/usr/bin/env bash
# Prints how large the tests are against the code they test: non-blank lines
# of C++, Python and shell sources under tests/ divided by those under src/.
set -euo pipefail

top=$(cd "$(dirname "$0")/.." && pwd)

count() {
  find "$top/$1" -type f \( -name '*.cpp' -o -name '*.h' -o -name '*.py' -o -name '*.sh' \) \
    -exec awk '/[^[:space:]]/ { n++ } END { print n + 0 }' {} + | awk '{ s += $1 } END { print s + 0 }'
}

tests=$(count tests)
code=$(count src)
awk -v t="$tests" -v c="$code" 'BEGIN { printf "test ratio: %d / %d = %.2f\n", t, c, t / c }'
