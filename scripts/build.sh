#!/bin/bash
# build.sh PRESET [-DNAME=VALUE...] [TARGET...] - configures one preset of CMakePresets.json and
# builds it, or only these targets; prints only what it leaves out, warnings and errors.
set -euo pipefail
cd "$(dirname "$0")/.."
preset=$1
shift
settings=() targets=()
for argument in "$@"; do
  case $argument in
    -*) settings+=("$argument") ;;
    *) targets+=(--target "$argument") ;;
  esac
done
log=$(mktemp)
trap 'rm -f "$log"' EXIT
{ cmake --preset "$preset" "${settings[@]}" && cmake --build --preset "$preset" "${targets[@]}"; } >"$log" 2>&1 || { cat "$log"; exit 1; }
sed -n 's/^-- \(Left out\)/\1/p' "$log"
# A build that works can still warn. With sanitizers g++ warns about the code of its own library.
case $preset in
  asan | tsan) ;;
  *) grep -A3 -E 'warning:' "$log" || true ;;
esac
