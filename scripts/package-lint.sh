#!/usr/bin/env bash
# Validates a built Debian package of Quillstash: its desktop file, its
# AppStream metadata and MIME entry as installed, and the package itself
# (lintian). Fails on any error; warnings are printed.
#   scripts/package-lint.sh build-package/quillstash_0.1.0_amd64.deb
set -euo pipefail

deb=$(realpath "$1")
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
dpkg-deb -x "$deb" "$root"

echo "== desktop-file-validate"
desktop-file-validate "$root"/usr/share/applications/*.desktop

echo "== appstreamcli validate"
# --no-net: the screenshots are checked for form, not fetched.
appstreamcli validate --pedantic --no-net --explain "$root"/usr/share/metainfo/*.metainfo.xml

echo "== shared-mime-info"
# update-mime-database reports what it cannot use; the glob must reach the
# database it builds.
mkdir -p "$root/mime-check/packages"
cp "$root"/usr/share/mime/packages/quillstash.xml "$root/mime-check/packages/"
update-mime-database -V "$root/mime-check" 2>&1 | tee "$root/mime.txt"
if grep -i 'error\|warning\|unknown' "$root/mime.txt"; then exit 1; fi
grep -q '^50:application/x-quillstash-backup:\*\.qs_backup$' "$root/mime-check/globs2"
grep '' "$root/mime-check/globs2" | grep -v '^#'

echo "== lintian"
lintian --info --display-info --pedantic --tag-display-limit 0 "$deb" | tee "$root/lintian.txt"
if grep -q '^E: ' "$root/lintian.txt"; then
  echo "lintian found errors" >&2
  exit 1
fi
echo "== package checks passed"
