#!/usr/bin/env python3
"""Runs the tests of the package; exits with 77 and names the packages if any that they need are missing."""

import importlib.util
import pathlib
import sys

NEEDED = {"cffi": "python3-cffi", "numpy": "python3-numpy", "pandas": "python3-pandas", "pytest": "python3-pytest",
          "dask": "python3-dask", "distributed": "python3-distributed", "pip": "python3-pip",
          "setuptools": "python3-setuptools", "wheel": "python3-wheel"}

missing = [package for module, package in NEEDED.items() if importlib.util.find_spec(module) is None]
if missing:
    print(f"Skipped the tests of the Python package, as {', '.join(missing)} is missing")
    sys.exit(77)

import pytest  # noqa: E402, it may be missing

sys.exit(pytest.main(["-q", "-p", "no:cacheprovider", str(pathlib.Path(__file__).parent), *sys.argv[1:]]))
