#!/usr/bin/env bash
# Checks the Debian package as a user gets it, on a machine it may install to and purge from
# (CI's brand-new one): it builds, lintian finds no error and no warning, "apt install ./....deb"
# installs it with its systemd user units left off, its autopkgtest passes against the installed
# package, and a purge leaves no file behind. Refuses to run where pindle-todo is already known
# to dpkg.
# usage: check-package.sh [--no-install]     (as root)
#   --no-install: only the build and lintian, for a machine that is not to be changed (no root)
set -euo pipefail
cd "$(dirname "$0")/.."
install=yes
[ "${1:-}" != --no-install ] || install=no
if [ $install = yes ]; then
  [ "$(id -u)" -eq 0 ] || { echo "check-package.sh: needs root (apt install, purge)" >&2; exit 2; }
  if dpkg -s pindle-todo >/dev/null 2>&1; then
    echo "check-package.sh: pindle-todo is installed here; this check would purge it" >&2
    exit 2
  fi
fi
apt_get() { DEBIAN_FRONTEND=noninteractive apt-get -y -qq -o DPkg::Lock::Timeout=300 "$@" >/dev/null; }
took() { echo "   ($((SECONDS - start)) s)"; start=$SECONDS; }
# Every path on this system but the ones apt, dpkg and the build change on their own, and the
# bytecode caches Python writes beside the tools it runs (autopkgtest's own).
snapshot() {
  find / -xdev \( -path /proc -o -path /sys -o -path /dev -o -path /run -o -path /tmp \
    -o -path /var/tmp -o -path /var/log -o -path /var/cache -o -path /var/lib/apt \
    -o -path /var/lib/dpkg -o -path "$PWD" -o -name __pycache__ \) -prune -o -print | sort
}
start=$SECONDS

echo "== the package, built from a clean copy"
deb=$(scripts/build-deb.sh | tail -n 1)
echo "$deb: $(stat -c %s "$deb") bytes"
took

echo "== lintian: any error or warning fails; informational and pedantic tags are shown too"
scripts/install-deps.sh lintian
lintian --fail-on error,warning -I --pedantic "${deb%.deb}.changes"
took
[ $install = yes ] || exit 0

echo "== apt install ./$(basename "$deb")"
# The dependencies and the test's tools come first, so that what was there before is known.
mapfile -t test_deps < <(sed -n 's/^Depends://p' debian/tests/control | tr -s ', ' '\n' | grep -v '^@\?$')
scripts/install-deps.sh autopkgtest "${test_deps[@]}"
apt_get satisfy "$(dpkg-deb -f "$deb" Depends)"
before=$(snapshot)
apt_get install "$deb"
installed=$(dpkg -L pindle-todo | grep -vx "/\.")
took

echo "== the sync's and the reminder's systemd user units are shipped, none enabled"
units=$(grep -c '^/usr/lib/systemd/user/pindle-' <<<"$installed")
[ "$units" -eq 8 ] || { echo "check-package.sh: $units user units shipped, not 8" >&2; exit 1; }
if ls /etc/systemd/user/*/pindle-* 2>/dev/null; then
  echo "check-package.sh: user units enabled for every account" >&2
  exit 1
fi

echo "== autopkgtest against the installed package"
autopkgtest "$deb" "$PWD/" -- null
took

echo "== apt purge pindle-todo leaves nothing behind"
apt_get purge pindle-todo
left=$(
  # What the package listed, unless it was there before (a shared folder such as /usr/bin).
  while read -r path; do
    [ ! -e "$path" ] && [ ! -L "$path" ] || grep -qxF "$path" <<<"$before" || echo "$path"
  done <<<"$installed"
  # Anything else made since, by a maintainer script or a trigger.
  comm -13 <(echo "$before") <(snapshot)
  ls /var/lib/dpkg/info/pindle-todo.* 2>/dev/null || true
)
if [ -n "$left" ]; then
  echo "check-package.sh: left behind after the purge:" >&2
  sort -u <<<"$left" >&2
  exit 1
fi
echo "$(wc -l <<<"$installed") paths installed, none left; nothing else added"
took
