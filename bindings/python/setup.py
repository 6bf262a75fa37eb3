"""Copies the built libraries into the package, so that it needs nothing else.

They come from ORLI11_LIBRARY_PATH, or from build/release/lib of the checkout. If they are missing,
the package uses the libraries of the system.
"""

import os
import pathlib
import shutil

from setuptools import Distribution, setup
from setuptools.command.build_py import build_py

BUILT = pathlib.Path(__file__).resolve().parents[2] / "build/release/lib"
FOLDER = pathlib.Path(os.environ.get("ORLI11_LIBRARY_PATH", BUILT))
LIBRARIES = [FOLDER / f"lib{name}.so.1" for name in ("ORLI11", "WRENI11", "PAVNI11")]
BUNDLED = all(library.exists() for library in LIBRARIES)


class BuildWithLibraries(build_py):
    def run(self):
        super().run()
        target = pathlib.Path(self.build_lib) / "orli11/lib"
        target.mkdir(exist_ok=True)
        for library in LIBRARIES if BUNDLED else ():
            shutil.copy(library, target)


class BinaryDistribution(Distribution):
    def has_ext_modules(self):
        return BUNDLED


setup(cmdclass={"build_py": BuildWithLibraries}, distclass=BinaryDistribution)
