#!/usr/bin/env bash
# Builds everything and runs the whole test suite. With --sanitize, the build uses ASan and UBSan.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
build=build
flags=()
if [ "${1:-}" = "--sanitize" ]; then
  build=build-sanitize
  flags=(-DTHALMOD_SANITIZE=ON -DTHALMOD_BUILD_BENCH=OFF -DCMAKE_BUILD_TYPE=Debug)
fi
cmake -S . -B "$build" -G Ninja "${flags[@]}"
cmake --build "$build"
ctest --test-dir "$build" --output-on-failure -j 2
