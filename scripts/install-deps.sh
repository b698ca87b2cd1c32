#!/usr/bin/env bash
# Installs what building and testing Kelvo needs, from Debian's packages only, and the
# packages named as arguments (scripts/package.sh adds lintian).
# Safe to run any number of times: apt-get skips what is already there.
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config python3
  nlohmann-json3-dev libtomlplusplus-dev libcli11-dev libfmt-dev libplist-dev libutf8proc-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  libcurl4-openssl-dev libsecret-1-dev libgit2-dev libnotify-dev git
  gnome-keyring dbus-daemon libglib2.0-bin python3-dbus python3-gi systemd
  procps util-linux coreutils gdu time
  qt6-base-dev libqt6svg6 adwaita-icon-theme desktop-file-utils
  xvfb xauth openbox trayer xdotool
  dpkg-dev file appstream
  "$@"
)

missing=()
for package in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed" || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

sudo=()
[ "$(id -u)" -ne 0 ] && sudo=(sudo)
export DEBIAN_FRONTEND=noninteractive
"${sudo[@]}" apt-get update -qq
"${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
