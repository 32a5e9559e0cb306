#!/usr/bin/env bash
# Installs the Debian 12 packages Quillstash builds, runs and is tested with,
# but only those that are missing, so that a second run costs nothing.
#   scripts/install-deps.sh           what `make run` and `make test` need
#   scripts/install-deps.sh package   what building and checking the .deb needs
set -euo pipefail

packages=(
  g++ cmake make pkg-config
  qt6-base-dev qt6-image-formats-plugins qt6-qpa-plugins
  libxcb1-dev libxcb-xfixes0-dev libxcb-keysyms1-dev libx11-dev libxtst-dev
  libcanberra-dev libplist-dev
  googletest libgtest-dev libbenchmark-dev
  clang libclang-rt-14-dev python3
  xvfb xauth xclip xdotool dbus x11-utils x11-xserver-utils imagemagick fonts-dejavu-core
)
if [ "${1:-}" = package ]; then
  # CPack's dependency scan (dpkg-shlibdeps, file), the validators, the clean
  # Debian root of scripts/package-check.sh, and the icon renderer.
  packages+=(dpkg-dev file lintian desktop-file-utils appstream shared-mime-info debootstrap librsvg2-bin)
fi

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}"
sudo=()
[ "$(id -u)" -eq 0 ] || sudo=(sudo)
export DEBIAN_FRONTEND=noninteractive
"${sudo[@]}" apt-get update -qq
"${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
