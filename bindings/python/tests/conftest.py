"""Imports the package of the checkout, which uses the libraries of the build."""

import os
import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parents[3]
sys.path[:0] = [str(ROOT / "bindings/python"), str(ROOT / "tests/persistence")]
# Dates and numbers read the same on every machine.
os.environ["LC_ALL"] = "C"
