#!/usr/bin/env bash
# Installs the Debian packages the build and the tests need, only those that are missing.
set -euo pipefail

packages=(cmake g++ make pkg-config libfltk1.3-dev libgtest-dev libgmock-dev
          xvfb xauth xdotool x11-apps x11-utils
          desktop-file-utils appstream man-db groff-base librsvg2-bin python3 python3-icalendar)
packages+=("$@")

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

sudo=""
if [ "$(id -u)" -ne 0 ]; then
  command -v sudo >/dev/null || { echo "need root or sudo to install: ${missing[*]}" >&2; exit 1; }
  sudo="sudo"
fi
echo "installing: ${missing[*]}"
$sudo apt-get update -qq
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
