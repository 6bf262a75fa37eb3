#!/bin/bash
# test.sh - builds the release and runs all its tests; installs what that needs (Debian 12).
set -euo pipefail
cd "$(dirname "$0")"
scripts/install.sh build tests
scripts/install.sh screen || echo "What needs Qt 6 or a screen that is not installed is left out: the formula editor and its tests." >&2
scripts/install.sh reference || echo "The reference of the headers needs Doxygen, which is not installed: its test is skipped." >&2
scripts/install.sh databases || echo "Tests that need a database which is not installed are skipped." >&2
scripts/install.sh python || echo "Packages of Python are missing: the tests of the Python package are skipped." >&2
echo "Building build/release ..."
scripts/build.sh release
# One more than there are processors: some tests wait for windows to be drawn.
ctest --preset release --no-tests=error -j $(($(nproc) + 1))
