#!/bin/bash
# demo.sh [--edit] - builds the release and computes formulas over four years of daily weather, or
# opens the formula editor over them; installs what that needs (Debian 12).
set -euo pipefail
cd "$(dirname "$0")"
groups=(build) targets=(orli)
case ${1-} in
  "") ;;
  --edit)
    if [ -z "${DISPLAY-}${WAYLAND_DISPLAY-}${QT_QPA_PLATFORM-}" ]; then
      echo "demo.sh: no display is there: DISPLAY, WAYLAND_DISPLAY and QT_QPA_PLATFORM are not set" >&2
      exit 1
    fi
    groups+=(screen) targets+=(ORLI11-qt)
    ;;
  *) echo "demo.sh: no such option: $1" >&2; exit 2 ;;
esac
scripts/install.sh "${groups[@]}"
echo "Building build/release ..."
scripts/build.sh release "${targets[@]}"
exec scripts/demo.sh build/release/bin/orli "$@"
