#!/usr/bin/env bash
# Installs the Debian packages that the benchmarks compare against (python3 with scipy for the
# k-d tree baseline, matplotlib for plots of the results), when any of them is missing.
set -euo pipefail
packages=(python3 python3-numpy python3-scipy python3-matplotlib)
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
