#!/usr/bin/env bash
# Builds everything and runs the whole test suite. With --sanitize, the build uses ASan and UBSan and
# treats warnings as errors.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
build=build
flags=()
if [ "${1:-}" = "--sanitize" ]; then
  build=build-sanitize
  # warnings are errors here, -Wshadow among them, so that CI stops on a new one
  flags=(-DTHALMOD_SANITIZE=ON -DTHALMOD_WERROR=ON -DTHALMOD_BUILD_BENCH=OFF -DCMAKE_BUILD_TYPE=Debug)
fi
cmake -S . -B "$build" -G Ninja "${flags[@]}"
cmake --build "$build"
ctest --test-dir "$build" --output-on-failure -j 2

# The Python module's tests, where the module was built (not in the sanitizer build). Exit status 5,
# no tests collected, means a broken set-up and fails like any other.
module=("$build"/python/thalmod*.so)
if [ -e "${module[0]}" ]; then
  status=0
  THAL_EXE="$PWD/$build/tools/thal" PYTHONPATH="$PWD/$build/python" PYTHONDONTWRITEBYTECODE=1 \
    /usr/bin/python3 -m pytest -q -p no:cacheprovider tests/python || status=$?
  if [ "$status" -eq 5 ]; then
    echo "pytest collected no tests from tests/python: the Python test set-up is broken." >&2
    exit 1
  fi
  exit "$status"
elif [ "$build" = build ]; then
  echo "The Python module was not built (pybind11-dev or python3-dev missing?): its tests did not run." >&2
  exit 1
fi
