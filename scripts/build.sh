#!/usr/bin/env bash
# Configures and builds, then prints the build folder on its last line.
# usage: build.sh [--tests] [--sanitize]
#   alone: the program only, in build/
#   --tests: everything with the test suites, in build/
#   --sanitize: everything with the test suites under ASan and UBSan, in build-sanitize/
set -euo pipefail
cd "$(dirname "$0")/.."

dir=build
flags=()
targets=(--target pindle_todo)
for arg in "$@"; do
  case $arg in
  --tests) flags+=(-DPINDLE_BUILD_TESTS=ON); targets=() ;;
  --sanitize) dir=build-sanitize; flags+=(-DPINDLE_BUILD_TESTS=ON -DPINDLE_SANITIZE=ON); targets=() ;;
  *) echo "build.sh: unknown option $arg" >&2; exit 2 ;;
  esac
done
cmake -S . -B "$dir" "${flags[@]}" >/dev/null
cmake --build "$dir" -j"$(nproc)" "${targets[@]}" >&2
echo "$dir"
