#!/bin/bash
# api.sh [FOLDER] - makes the reference of the public headers, FOLDER/index.html or docs/api/index.html,
# with Doxygen; a declaration without a description is an error.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install.sh reference
folder=${1:-docs/api}
mkdir -p "$folder"
{ cat docs/Doxyfile; echo "OUTPUT_DIRECTORY = \"$folder\""; } | doxygen -
