#!/usr/bin/env bash
# Proves the Debian package on a clean Debian 12 root: debootstraps bookworm
# (minbase: essential packages and apt only) into a folder, installs the .deb
# there with apt (its Depends only, no Recommends), checks that the program
# and its Qt platform plugin find every library, then starts the program the
# way its desktop file does under Xvfb, as an ordinary user with autolaunch
# on, and checks that it is alive after 3 s, shows its window, and writes an
# autostart entry that starts /usr/bin/quillstash. Needs root; not part of
# `make test`. The root is deleted afterwards unless KEEP=1.
#   sudo scripts/package-check.sh build-package/quillstash_0.1.0_amd64.deb
# CHECK_ROOT  folder for the Debian root (default: a new one under /work or /tmp)
# MIRROR      Debian mirror (default http://deb.debian.org/debian)
set -euo pipefail

[ "$(id -u)" -eq 0 ] || { echo "package-check.sh needs root (debootstrap, chroot)" >&2; exit 1; }
[ $# -eq 1 ] && [ -f "$1" ] || { echo "usage: $0 quillstash_VERSION_amd64.deb" >&2; exit 1; }
deb=$(realpath "$1")
mirror=${MIRROR:-http://deb.debian.org/debian}
parent=/work; [ -d "$parent" ] && [ -w "$parent" ] || parent=/tmp
root=${CHECK_ROOT:-$(mktemp -d "$parent/package-check.XXXXXX")}
chmod 755 "$root"   # mktemp makes it private; the test user must get in
out=$(mktemp -d)

step() { printf '\n== [%4ds] %s\n' "$SECONDS" "$*"; }
in_root() { chroot "$root" /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LANG=C.UTF-8 "$@"; }

cleanup() {
  status=$?
  if mountpoint -q "$root/proc"; then umount "$root/proc"; fi
  if [ "${KEEP:-0}" = 1 ]; then
    echo "kept the Debian root in $root"
  elif findmnt -rn -o TARGET | grep -q "^$root/"; then
    echo "something is still mounted under $root: not deleting it" >&2
  else
    rm -rf --one-file-system "$root"
  fi
  rm -rf "$out"
  exit $status
}
trap cleanup EXIT

step "debootstrap bookworm (minbase) into $root"
debootstrap --variant=minbase bookworm "$root" "$mirror" >"$out/debootstrap.log" 2>&1 \
  || { tail -20 "$out/debootstrap.log"; exit 1; }
mount -t proc proc "$root/proc"
cp /etc/resolv.conf "$root/etc/resolv.conf"
du -sh --one-file-system "$root" | sed 's/^/size of the clean root: /'

step "apt-get install ./$(basename "$deb")"
cp "$deb" "$root/tmp/"
in_root apt-get update -qq
in_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends \
  "./tmp/$(basename "$deb")" >"$out/install.log" 2>&1 || { tail -30 "$out/install.log"; exit 1; }
grep -E '^([0-9]+ upgraded|Need to get|After this operation)' "$out/install.log"

step "libraries: the program and the xcb platform plugin"
plugin=$(in_root sh -c 'ls /usr/lib/*/qt6/plugins/platforms/libqxcb.so')
missing=$(in_root ldd /usr/bin/quillstash "$plugin" | grep 'not found' || true)
[ -z "$missing" ] || { echo "missing libraries:"; echo "$missing"; exit 1; }
echo "all found ($plugin)"
grep -q 'qs_backup' "$root/usr/share/mime/globs2" 2>/dev/null \
  && echo "MIME database knows *.qs_backup" || echo "no MIME database (shared-mime-info is not installed)"

step "tools to look at it: xvfb, xauth, xdotool, x11-utils, x11-apps"
in_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends \
  xvfb xauth xdotool x11-utils x11-apps >"$out/tools.log" 2>&1 || { tail -30 "$out/tools.log"; exit 1; }

step "start it as its desktop file does, under Xvfb"
exec_line=$(sed -n 's/^Exec=//p' "$root/usr/share/applications/quillstash.desktop")
command=$(printf '%s' "$exec_line" | sed 's/ *%[fFuUik]//g')
echo "Exec=$exec_line -> $command"
home=/home/tester
mkdir -p "$root$home/.config/Quillstash" "$root/run/user/1000"
printf '[General]\nautolaunch=true\n' >"$root$home/.config/Quillstash/Quillstash.conf"
chown -R 1000:1000 "$root$home" "$root/run/user/1000"
chmod 700 "$root/run/user/1000"
cat >"$root/tmp/start.sh" <<'SCRIPT'
#!/bin/sh
# Runs inside the X server: starts the program, looks at it after 3 s, quits it.
$QUILLSTASH_COMMAND >"$HOME/quillstash.log" 2>&1 &
pid=$!
sleep 3
if kill -0 "$pid" 2>/dev/null; then echo "alive after 3 s (pid $pid)"; else echo "NOT RUNNING after 3 s"; fi
echo "windows named Untitled: $(xdotool search --name Untitled | wc -l)"
xwininfo -root -tree | grep -i 'untitled' | sed 's/^ */  /'
xwd -root -silent >"$HOME/screen.xwd" 2>/dev/null || true
kill -TERM "$pid" 2>/dev/null
wait "$pid"
echo "exit status after SIGTERM: $?"
SCRIPT
chmod 755 "$root/tmp/start.sh"
start=$SECONDS
chroot --userspec=1000:1000 "$root" /usr/bin/env -i PATH=/usr/bin:/bin HOME=$home LANG=C.UTF-8 \
  XDG_RUNTIME_DIR=/run/user/1000 QT_QPA_PLATFORM=xcb QUILLSTASH_COMMAND="$command" \
  xvfb-run -a -s "-screen 0 1280x1024x24 -nolisten tcp" /tmp/start.sh | tee "$out/run.txt"
echo "run took $((SECONDS - start)) s"
echo "-- what the program printed:"
cat "$root$home/quillstash.log"
echo "-- end"
if [ -n "${SCREENSHOT:-}" ] && [ -s "$root$home/screen.xwd" ]; then
  cp "$root$home/screen.xwd" "$SCREENSHOT"
fi

step "autostart entry"
entry="$root$home/.config/autostart/quillstash.desktop"
cat "$entry"
grep -qx 'Exec=/usr/bin/quillstash' "$entry"
if command -v desktop-file-validate >/dev/null; then desktop-file-validate "$entry"; fi
grep -q '^alive after 3 s' "$out/run.txt"
grep -q '^windows named Untitled: [1-9]' "$out/run.txt"
# With no notification service on a bus, the program prints that it has none.
# The root has no sound device, so ALSA complains when a sound is played.
if grep -v -e '^Could not load Growl.framework$' -e '^ALSA lib ' "$root$home/quillstash.log" \
    | grep -iE 'error|fatal|could not|cannot|failed'; then
  echo "the program complained" >&2; exit 1
fi

step "package-check passed ($(du -h "$deb" | cut -f1) package)"
