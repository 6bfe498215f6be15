#!/usr/bin/env bash
# Installs the Debian packages that the project needs, when any of them is missing; packages named
# as arguments are installed beside them.
set -euo pipefail
packages=(build-essential cmake ninja-build pkg-config libnetcdf-dev netcdf-bin libgtest-dev libpng-dev
          pybind11-dev python3-dev python3-numpy python3-pytest python3-xarray python3-netcdf4  # python/
          python3-matplotlib  # the README's Python example
          clang libclang-rt-14-dev "$@")  # clang and libFuzzer: scripts/run-fuzz.sh
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "Installing: ${missing[*]}"
  sudo=""
  [ "$(id -u)" -ne 0 ] && sudo="sudo"
  export DEBIAN_FRONTEND=noninteractive
  $sudo apt-get update -q
  $sudo apt-get install -y -q --no-install-recommends "${missing[@]}"
fi
