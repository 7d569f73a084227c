#!/usr/bin/env bash
# Installs the Debian packages a part of the project needs, only those that are missing.
# usage: install-deps.sh [--companions] [--tests] [PACKAGE...]
#   alone: what building the program takes (compiler, CMake, FLTK, the xxHash header, liburing)
#   --companions: also the libraries of pindle_export, pindle_sync and pindle_remind (libical,
#                 libcurl, pugixml, nlohmann-json, libsecret, toml++, GIO)
#   --tests: the companions' libraries and what the test suites run (GoogleTest, Xvfb and
#            xdotool, xclip, Python, validators, the Radicale, Xandikos and Cyrus IMAP CalDAV
#            servers with Cyrus's SASL tools and the mail transport it wants (msmtp's, which
#            runs no daemon: exim's fails to install where there is no user mail, as on a
#            minimal Debian 13), openssl for a server's own certificate, the caldav
#            client, strace for the calls a save makes, e2fsprogs for a small file system to
#            fill, a D-Bus session with gnome-keyring and secret-tool, systemd-analyze for the
#            units, dunst for a notification service; on Debian 13 also sway with grim and
#            wtype, a headless Wayland session for the window, and libdecor's plugin, which a
#            desktop install brings along with FLTK 1.4)
#   PACKAGE...: anything more a script of its own needs (clang for fuzzing, ...)
# No package's service is started by the install: the tests start their own servers.
set -euo pipefail

# Debian 12 has FLTK 1.3 (X11 only); Debian 13 has 1.4, which draws on Wayland as well.
. /etc/os-release
case ${VERSION_ID:-} in
12*) fltk=libfltk1.3-dev wayland=() ;;
*) fltk=libfltk1.4-dev wayland=(sway grim wtype libdecor-0-plugin-1-cairo) ;;
esac
packages=(cmake g++ make "$fltk" libxxhash-dev liburing-dev)
companions=(pkg-config libcurl4-openssl-dev libical-dev libpugixml-dev nlohmann-json3-dev
            libsecret-1-dev libtomlplusplus-dev libglib2.0-dev)
tests=(libgtest-dev libgmock-dev xvfb xauth xdotool x11-apps x11-utils imagemagick
       desktop-file-utils appstream man-db groff-base librsvg2-bin
       python3 python3-icalendar radicale xandikos cyrus-imapd cyrus-caldav sasl2-bin
       libsasl2-modules msmtp-mta openssl python3-caldav e2fsprogs xclip strace dbus
       gnome-keyring libsecret-tools systemd dunst "${wayland[@]}")
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
# Debian starts a server's service as its package is installed (Cyrus, Radicale) unless
# policy-rc.d forbids it: one that forbids every start stands in for the install, if there is none.
policy=/usr/sbin/policy-rc.d
if [ ! -e $policy ]; then
  trap '"${sudo[@]}" rm -f $policy' EXIT
  printf '#!/bin/sh\n# pindle install-deps.sh: no service starts during its install\nexit 101\n' |
    "${sudo[@]}" tee $policy >/dev/null
  "${sudo[@]}" chmod 755 $policy
fi
"${sudo[@]}" apt-get update -qq -o DPkg::Lock::Timeout=300
"${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends \
  -o DPkg::Lock::Timeout=300 "${missing[@]}" >/dev/null
# Nor are the servers just installed left to start at the next boot.
if [ -d /run/systemd/system ]; then
  for p in "${missing[@]}"; do
    case $p in
    cyrus-imapd | radicale) "${sudo[@]}" systemctl disable --now "$p" >/dev/null 2>&1 || true ;;
    esac
  done
fi
