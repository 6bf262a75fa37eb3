#!/bin/bash
# demo.sh - builds the release and computes formulas over four years of daily weather; installs what
# that needs (Debian 12).
set -euo pipefail
cd "$(dirname "$0")"
scripts/install.sh build
echo "Building build/release ..."
scripts/build.sh release
exec scripts/demo.sh build/release/bin/orli
