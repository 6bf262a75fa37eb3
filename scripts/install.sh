#!/bin/bash
# install.sh GROUP... - installs the Debian packages of the groups that are not installed yet.
#   build      what the libraries and the host program are built with
#   tests      what the tests and the benchmarks are built with, and packages of the libraries
#   screen     what the formula editor is built with, and a screen with a user for its tests
#   pictures   a small window manager, for the pictures of the editor
#   databases  two databases with their ODBC drivers, which tests compare formulas with
#   others     programs that bench/files.py compares orli with; DuckDB is installed by npm
#   python     what the Python package needs, and its tests, tables and clusters
#   reference  what the reference of the public headers is made with
#   check      what .ci/run needs beyond that
set -euo pipefail

build="g++ cmake ninja-build python3 pkgconf libcli11-dev libcsv-dev zlib1g-dev unixodbc-dev libacl1-dev"
tests="libgtest-dev libbenchmark-dev dpkg-dev fakeroot file"
screen="qt6-base-dev xvfb xdotool fonts-dejavu-core dbus-daemon at-spi2-core python3-pyatspi"
pictures="openbox"
databases="libsqliteodbc odbc-postgresql postgresql"
others="sqlite3 miller npm"
python="python3-cffi python3-numpy python3-pandas python3-dask python3-distributed python3-pytest python3-pip python3-setuptools python3-wheel"
reference="doxygen"
check="clang clang-tidy clang-format libclang-rt-14-dev"

missing=""
for group in "$@"; do
  case $group in
    build | tests | screen | pictures | databases | others | python | reference | check) ;;
    *) echo "install.sh: no such group: $group" >&2; exit 2 ;;
  esac
  for package in ${!group}; do
    state=$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null || true)
    [ "$state" = installed ] || missing+=" $package"
  done
done
[ -n "$missing" ] || exit 0

as_root=()
if [ "$(id -u)" -ne 0 ]; then
  command -v sudo >/dev/null || { echo "install.sh: run this as root, or install sudo; missing:$missing" >&2; exit 1; }
  as_root=(sudo)
fi
echo "Installing what is missing:$missing"
quiet_apt() { "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -qq -o Dpkg::Use-Pty=0 "$@" </dev/null; }
quiet_apt update
# shellcheck disable=SC2086 # a list of names
quiet_apt install -y --no-install-recommends $missing >/dev/null
