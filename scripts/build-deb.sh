#!/usr/bin/env bash
# Builds the Debian package pindle-todo from a clean copy of this tree (what git tracks or would
# add, no build folders), after installing with apt-get whatever debian/control's Build-Depends
# lists and this machine lacks. Leaves the .deb, its debug symbols, .buildinfo, .changes and
# the build's log (.build) in out/, and prints the .deb's path on its last line.
# usage: build-deb.sh
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-deps.sh dpkg-dev git
# The package's version is the program's: a release of the program bumps both.
version=$(sed -n 's/^project(PindleToDo VERSION \([^ ]*\) .*/\1/p' CMakeLists.txt)
packaged=$(dpkg-parsechangelog -SVersion)
if [ "$packaged" != "$version" ]; then
  echo "build-deb.sh: debian/changelog is at $packaged, CMakeLists.txt at $version;" \
       "add a changelog entry (dch -v $version)" >&2
  exit 1
fi

if ! dpkg-checkbuilddeps 2>/dev/null; then
  sudo=()
  [ "$(id -u)" -eq 0 ] || sudo=(sudo)
  # apt resolves what dpkg-checkbuilddeps only reports: the virtual debhelper-compat, versions.
  "${sudo[@]}" apt-get update -qq -o DPkg::Lock::Timeout=300
  "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get build-dep -y -qq \
    --no-install-recommends -o DPkg::Lock::Timeout=300 "$PWD" >/dev/null
fi

# dpkg-buildpackage writes beside the source folder, so the copy gets a folder of its own.
work=out/deb-build
rm -rf "$work"
mkdir -p "$work/pindle-todo-$version"
git ls-files -z --cached --others --exclude-standard |
  tar --null --files-from=- --ignore-failed-read -cf - | tar -xf - -C "$work/pindle-todo-$version"
name=pindle-todo_${version}_$(dpkg --print-architecture)
echo "building $name.deb, log in out/$name.build" >&2
if ! (cd "$work/pindle-todo-$version" && dpkg-buildpackage -us -uc -b -jauto) >"out/$name.build" 2>&1; then
  tail -n 40 "out/$name.build" >&2
  exit 1
fi
mv -f "$work"/*.deb "$work"/*.buildinfo "$work"/*.changes out/
rm -rf "$work"
echo "$PWD/out/$name.deb"
