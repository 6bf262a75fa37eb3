"""Finds and loads the three libraries."""

from __future__ import annotations

import os
import pathlib
from typing import Iterator

import cffi

from . import _cdef

ffi = cffi.FFI()
ffi.cdef(_cdef.RECORDS)
ffi.cdef(_cdef.PACKED_RECORDS, packed=True)
ffi.cdef(_cdef.BLOCK + _cdef.ENGINE + _cdef.TOOLS + _cdef.CALENDAR)

# The major version of the interface that this package is written for; a part of the file names.
MAJOR = 1
UTF8 = 65001


def _folders() -> Iterator[pathlib.Path]:
    """Where the libraries may be, the most specific place first."""
    package = pathlib.Path(__file__).resolve().parent
    given = os.environ.get("ORLI11_LIBRARY_PATH")
    if given:
        yield pathlib.Path(given)
        return
    yield package / "lib"
    if len(package.parents) >= 3 and package.parents[1].name == "bindings":
        yield package.parents[2] / "build" / "release" / "lib"


def _open(name: str):
    file = f"lib{name}.so.{MAJOR}"
    for folder in _folders():
        if (folder / file).exists():
            return ffi.dlopen(str(folder / file))
    if os.environ.get("ORLI11_LIBRARY_PATH"):
        raise OSError(f"{file} is not in ORLI11_LIBRARY_PATH, {os.environ['ORLI11_LIBRARY_PATH']}")
    return ffi.dlopen(file)  # by the system's loader


try:
    engine = _open("ORLI11")
    tools = _open("WRENI11")
    calendar = _open("PAVNI11")
except OSError as error:
    raise ImportError(
        f"{error}. Install the library, build it with scripts/build.sh release in the checkout, or "
        "name the folder that it is in by ORLI11_LIBRARY_PATH.") from error

if engine.ORLVersion() >> 16 != MAJOR:
    raise ImportError(f"found version {engine.ORLVersion() >> 16} of the library; "
                      f"this package is for version {MAJOR}")
# Python's strings hold every character, so the process works in UTF-8.
tools.WRENSetCodePage(UTF8)
