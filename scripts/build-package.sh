#!/usr/bin/env bash
# Builds the Debian package: a Release build for /usr with Debian's hardening
# flags, without tests and benchmarks, packed by CPack, then validated
# (scripts/package-lint.sh). Prints the path of the .deb.
#   BUILD_DIR (default build-package)  JOBS (default: the number of cores)
set -euo pipefail

top=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$top/build-package}
jobs=${JOBS:-$(nproc)}

# The same flags a Debian package build gets (stack protector, fortify,
# format checks, full RELRO, immediate binding), paths in the debug
# information made relative to the source.
export DEB_BUILD_MAINT_OPTIONS=hardening=+all
cxxflags="$(cd "$top" && dpkg-buildflags --get CXXFLAGS) $(dpkg-buildflags --get CPPFLAGS)"
ldflags=$(dpkg-buildflags --get LDFLAGS)

cmake -S "$top" -B "$build" -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=/usr \
  -DBUILD_TESTING=OFF -DCMAKE_DISABLE_FIND_PACKAGE_benchmark=ON -DQUILLSTASH_SOURCE_SOUNDS=OFF \
  -DCMAKE_CXX_FLAGS="$cxxflags" -DCMAKE_EXE_LINKER_FLAGS="$ldflags" >/dev/null
cmake --build "$build" -j "$jobs"
rm -f "$build"/quillstash_*.deb
(cd "$build" && cpack -G DEB)
deb=$(ls "$build"/quillstash_*_amd64.deb)
"$top/scripts/package-lint.sh" "$deb"
echo "$deb"
