#!/bin/bash
# fuzz.sh [SECONDS] - builds the fuzz targets and runs each for that time, 60 s by default. Inputs
# with new coverage are kept in build/fuzz/corpus for the next run. Fails on a finding and says
# where it is.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}
scripts/install.sh build check
scripts/build.sh fuzz

fuzz=build/fuzz
# A single allocation is limited only by the targets themselves.
options=(-timeout=10 -rss_limit_mb=2048 -malloc_limit_mb=2048)
mkdir -p "$fuzz/findings"

run() {
  mkdir -p "$fuzz/corpus/$1"
  "$fuzz/bin/fuzz_$1" "${options[@]}" -max_total_time="$seconds" -print_final_stats=1 \
    -dict="$fuzz/seeds/formula.dict" -artifact_prefix="$fuzz/findings/$1-" \
    "$fuzz/corpus/$1" "$fuzz/seeds/$1" >"$fuzz/$1.log" 2>&1
}

# What a target has found, and how to reproduce it.
report() {
  local log=$fuzz/$1.log file
  grep -aE -A12 'ERROR:|runtime error:|does not hold' "$log" || tail -n 20 "$log"
  file=$(sed -n 's/.*Test unit written to //p' "$log" | tail -n 1)
  echo "fuzz_$1 has found something; the whole report is in $log."
  [ -z "$file" ] || echo "Reproduce it with: $fuzz/bin/fuzz_$1 ${options[*]} $file"
}

# In parallel.
declare -A running
for target in block_reader formula; do
  run "$target" &
  running[$target]=$!
done
failed=0
for target in "${!running[@]}"; do
  if wait "${running[$target]}"; then
    echo "fuzz_$target, $seconds s:"
    grep -a '^stat::' "$fuzz/$target.log"
  else
    failed=1
    report "$target"
  fi
done
exit "$failed"
