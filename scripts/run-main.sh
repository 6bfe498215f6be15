#!/usr/bin/env bash
# Builds the library and its tools, then runs the main job: writes a sample model run, reports
# what it holds, and paints its surface temperature and its bathymetry.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
cmake -S . -B build -G Ninja
cmake --build build

thal=./build/tools/thal
sample=build/sample
"$thal" sample "$sample"
"$thal" info "$sample/fjord.nc"
"$thal" paint "$sample/fjord.nc" --item temperature --time "2024-06-01 12:00:00" --layer surface \
  -o "$sample/surface-temperature.png"
"$thal" paint-bathy "$sample/fjord_bathy.nc" -o "$sample/bathymetry.png"
echo
echo "The surface temperature is pictured in $PWD/$sample/surface-temperature.png"
echo "and the bathymetry in $PWD/$sample/bathymetry.png."
