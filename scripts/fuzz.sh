#!/bin/bash
# fuzz.sh [SECONDS] - builds the fuzz targets and runs each for that time, 60 s by default. What they
# find of new ways through the code stays in build/fuzz/corpus for the next run. Fails on a finding
# and says where it is.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}
scripts/install.sh build check
scripts/build.sh fuzz

fuzz=build/fuzz
failed=0
for target in block_reader formula; do
  mkdir -p "$fuzz/corpus/$target" "$fuzz/findings"
  log=$fuzz/$target.log
  # No limit for one allocation but that of the targets themselves.
  options=(-timeout=10 -rss_limit_mb=2048 -malloc_limit_mb=2048)
  echo "fuzz_$target, $seconds s:"
  if "$fuzz/bin/fuzz_$target" "${options[@]}" -max_total_time="$seconds" -print_final_stats=1 \
    -dict="$fuzz/seeds/formula.dict" -artifact_prefix="$fuzz/findings/$target-" \
    "$fuzz/corpus/$target" "$fuzz/seeds/$target" >"$log" 2>&1; then
    grep -a '^stat::' "$log"
    continue
  fi
  failed=1
  grep -aE -A12 'ERROR:|runtime error:|does not hold' "$log" || tail -n 20 "$log"
  file=$(sed -n 's/.*Test unit written to //p' "$log" | tail -n 1)
  echo "fuzz_$target has found something; the whole report is in $log."
  [ -z "$file" ] || echo "Reproduce it with: $fuzz/bin/fuzz_$target ${options[*]} $file"
done
exit "$failed"
