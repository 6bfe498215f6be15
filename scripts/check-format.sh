#!/usr/bin/env bash
# Fails when a C++ source of the project differs from what clang-format makes of it (.clang-format).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh clang-format
git ls-files -- '*.cpp' '*.h' | xargs clang-format --dry-run --Werror
echo "Every C++ source is formatted."
