#!/usr/bin/env bash
# Builds the fuzz targets with clang into build-fuzz, writes their seeds and runs each target for
# SECONDS (default 30). Any finding fails with a non-zero exit: a crash or sanitizer report, a leak,
# an input that runs longer than 20 s, or memory beyond 2 GB. Findings are kept in
# build-fuzz/findings/<target>/ and the log of each run in build-fuzz/logs/.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-30}
scripts/setup.sh
build=build-fuzz
launcher=()
command -v ccache > /dev/null &&
  launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DCMAKE_C_COMPILER_LAUNCHER=ccache)
cmake -S . -B "$build" -G Ninja -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
  -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTHALMOD_FUZZ=ON -DTHALMOD_BUILD_TESTS=OFF \
  -DTHALMOD_BUILD_BENCH=OFF -DTHALMOD_BUILD_TOOLS=OFF -DTHALMOD_PYTHON=OFF "${launcher[@]}" > /dev/null
targets=(fuzz_resultfile fuzz_mesh fuzz_xml fuzz_texttable fuzz_dates fuzz_grid fuzz_thalargs)
cmake --build "$build" --target "${targets[@]}"
# The sample run joins the seeds when a thal of the normal build is there.
THAL=${THAL:-build/tools/thal} scripts/fuzz-seeds.sh "$build/seeds"

mkdir -p "$build/logs"
failed=()
for t in "${targets[@]}"; do
  corpus="$build/corpus/$t"
  findings="$build/findings/$t"
  mkdir -p "$corpus" "$findings"
  log="$build/logs/$t.log"
  # leaks are findings too; the run's own corpus grows in corpus/, the seeds stay as they are
  if ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 "$build/fuzz/$t" \
      -max_total_time="$seconds" -timeout=20 -rss_limit_mb=2048 -malloc_limit_mb=2048 \
      -print_final_stats=1 -artifact_prefix="$findings/" "$corpus" "$build/seeds/${t#fuzz_}" \
      > "$log" 2>&1; then
    runs=$(grep -o 'stat::number_of_executed_units: *[0-9]*' "$log" | grep -o '[0-9]*$' || echo "?")
    echo "$t: ${seconds} s, $runs runs, no finding"
  else
    echo "$t: FINDING, see $log and $findings/"
    grep -m3 -E 'ERROR|runtime error|SUMMARY' "$log" || tail -5 "$log"
    failed+=("$t")
  fi
done
if [ ${#failed[@]} -gt 0 ]; then
  echo "Fuzzing found problems in: ${failed[*]}"
  exit 1
fi
