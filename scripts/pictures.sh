#!/bin/bash
# pictures.sh - takes the screenshots of the editor in docs/screens again, on a screen of its own
# with a small window manager; installs what that needs (Debian 12). Look at each before you commit
# it.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install.sh build screen pictures
scripts/build.sh release
exec python3 -B scripts/pictures.py docs/screens
