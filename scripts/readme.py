#!/usr/bin/env python3
"""Updates the output of the demo in README.md: scripts/readme.py PROGRAM."""

import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
shown = subprocess.check_output([ROOT / "scripts/demo.sh", pathlib.Path(sys.argv[1]).resolve()], text=True)
page = ROOT / "README.md"
text, count = re.subn(r"(## What the demo prints\n\n).*?(?=\nThe last check)",
                      lambda match: match[1] + "```console\n" + shown.strip() + "\n```\n",
                      page.read_text(), count=1, flags=re.DOTALL)
assert count == 1, "README.md has no place for the demo"
page.write_text(text)
