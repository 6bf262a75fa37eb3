"""Runs the built programs for the tests of this folder."""

import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD = pathlib.Path(os.environ.get("ORLI_BUILD", ROOT / "build/release"))
ORLI = BUILD / "bin/orli"
sys.path.append(str(ROOT / "tests/support"))
from plain_environment import plain_environment  # noqa: E402, the folder has just been named

WEATHER = ROOT / "data/weather.csv"
# The conventions of dates come from the environment: the same on every machine.
ENVIRONMENT = plain_environment(LC_ALL="C")


def run(*arguments, stdin=b"", **variables):
    """Runs orli; its status, and what it wrote to both outputs as bytes."""
    result = subprocess.run([ORLI, *arguments], input=stdin, capture_output=True, check=False,
                            env=dict(ENVIRONMENT, **variables))
    return result.returncode, result.stdout, result.stderr


def without_hint(output):
    """A message as text, without the host's hint below it, which host_hints_test.py has."""
    return re.sub(r"^hint: .*\n", "", output.decode(), flags=re.MULTILINE)


class FolderCase(unittest.TestCase):
    """Tests with a folder of their own for files."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def file(self, content, name="data.csv"):
        path = self.folder / name
        path.write_bytes(content if isinstance(content, bytes) else content.encode())
        return path


def main():
    unittest.main(argv=[sys.argv[0], "-v"] if len(sys.argv) == 1 else sys.argv)
