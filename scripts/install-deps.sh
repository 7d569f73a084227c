#!/usr/bin/env bash
# Installs the Debian packages a part of the project needs, only those that are missing.
# usage: install-deps.sh [--companions] [--tests] [PACKAGE...]
#   alone: what building the program takes (compiler, CMake, FLTK, the xxHash header, liburing)
#   --companions: also the libraries of pindle_export and pindle_sync (libical, libcurl, pugixml,
#                 nlohmann-json, libsecret, toml++)
#   --tests: the companions' libraries and what the test suites run (GoogleTest, Xvfb and
#            xdotool, xclip, Python, validators, the Radicale and Xandikos CalDAV servers, openssl
#            for a server's own certificate, the caldav client, strace for the calls a save
#            makes, e2fsprogs for a small file system to fill, a D-Bus session with gnome-keyring
#            and secret-tool, systemd-analyze for the units)
#   PACKAGE...: anything more a script of its own needs (clang for fuzzing, ...)
set -euo pipefail

packages=(cmake g++ make libfltk1.3-dev libxxhash-dev liburing-dev)
companions=(pkg-config libcurl4-openssl-dev libical-dev libpugixml-dev nlohmann-json3-dev
            libsecret-1-dev libtomlplusplus-dev)
tests=(libgtest-dev libgmock-dev xvfb xauth xdotool x11-apps x11-utils imagemagick
       desktop-file-utils appstream man-db groff-base librsvg2-bin
       python3 python3-icalendar radicale xandikos openssl python3-caldav e2fsprogs xclip strace
       dbus gnome-keyring libsecret-tools systemd)
while [ $# -gt 0 ]; do
  case $1 in
  --companions) packages+=("${companions[@]}") ;;
  --tests) packages+=("${companions[@]}" "${tests[@]}") ;;
  *) break ;;
  esac
  shift
done
packages+=("$@")

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

sudo=()
if [ "$(id -u)" -ne 0 ]; then
  command -v sudo >/dev/null || { echo "need root or sudo to install: ${missing[*]}" >&2; exit 1; }
  sudo=(sudo)
fi
echo "installing: ${missing[*]}" >&2
"${sudo[@]}" apt-get update -qq -o DPkg::Lock::Timeout=300
"${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends \
  -o DPkg::Lock::Timeout=300 "${missing[@]}" >/dev/null
