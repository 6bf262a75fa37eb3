#!/bin/bash
# lint.sh [FOLDER...] - clang-tidy, with the warnings of clang++, over all sources or those of these
# folders; prints the findings and fails when there is one.
#
# It checks the sources as the preset "clang" compiles them, several of a folder as one: most of the
# time goes into headers. A source of the build has no .clang-tidy of its own above it, so that of
# the folder whose sources it includes is passed along, and the analyzer of paths reads them as it
# reads a main file.
set -euo pipefail
cd "$(dirname "$0")/.."
build=build/clang
log=$build/lint.log

cmake --preset clang >/dev/null
# Only what sources include has to be built.
mapfile -t included < <(ninja -C "$build" -t targets all | sed -n 's/^\(.*\(\.pch\|\.inc\)\): .*/\1/p')
ninja -C "$build" "${included[@]}" >"$build/included.log" || { cat "$build/included.log"; exit 1; }

# Two arguments for each source of the build, one a line.
sources() {
  local source folder
  sed -n 's/^ *"file": "\(.*\/Unity\/.*\)".*/\1/p' "$build/compile_commands.json" | while read -r source; do
    folder=${source#"$PWD/$build/"}
    folder=${folder%%/CMakeFiles/*}
    for wanted in "${@:-$folder}"; do
      [[ $folder/ == "${wanted%/}"/* ]] || continue
      while [ ! -f "$folder/.clang-tidy" ]; do
        folder=$(dirname "$folder")
      done
      printf '%s\n' "--config-file=$folder/.clang-tidy" "$source"
      break
    done
  done
}

arguments=(--quiet -p "$build" --extra-arg=-Xclang --extra-arg=-analyzer-opt-analyze-headers)
mapfile -t checked < <(sources "$@")
if [ ${#checked[@]} -eq 0 ]; then
  echo "no sources in: $*" >&2
  exit 1
fi
failed=0
printf '%s\n' "${checked[@]}" |
  xargs -P "$(nproc)" -d '\n' -n 2 clang-tidy "${arguments[@]}" >"$log" 2>&1 || failed=1
# It reports findings of warning level with status 0.
if grep -E -A5 'warning:|error:' "$log"; then
  failed=1
elif [ $failed -ne 0 ]; then
  tail -n 30 "$log"
fi
exit $failed
