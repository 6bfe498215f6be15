#!/usr/bin/env bash
# Installs, beside the project's own packages, the Debian packages that the benchmarks compare
# against: python3 with scipy (the k-d tree baseline), matplotlib (the point search baseline) and
# netCDF4 (the side-by-side of bench/side_by_side.py).
set -euo pipefail
exec "$(dirname "$0")/setup.sh" python3 python3-numpy python3-scipy python3-matplotlib python3-netcdf4
