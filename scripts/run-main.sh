#!/usr/bin/env bash
# Builds the library and its tools, then runs the main job.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
cmake -S . -B build -G Ninja
cmake --build build
./build/tools/thal_demo
