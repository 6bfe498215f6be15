#!/usr/bin/env bash
# Installs, beside the project's own packages, the Debian packages that the benchmarks compare
# against: python3 with scipy (the k-d tree baseline) and matplotlib (the point search baseline).
set -euo pipefail
exec "$(dirname "$0")/setup.sh" python3 python3-numpy python3-scipy python3-matplotlib
