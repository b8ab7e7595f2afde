#!/usr/bin/env python3
"""Keeps the prefix Zf for the names that users know: src/ has those of zf_names.txt, each of them and no others.

Prints what is missing or more, a line each, and ends with 1.

Usage: names.py ROOT       ROOT: the folder that holds src/ and tests/
"""

import pathlib
import re
import sys

root = pathlib.Path(sys.argv[1])
known = set((root / "tests/fence/zf_names.txt").read_text(encoding="utf-8").split())
sources = [path for path in (root / "src").rglob("*") if path.suffix in (".h", ".cpp")]
found = {name for path in sources for name in re.findall(r"\bZf\w+", path.read_text(encoding="utf-8"))}
for name in sorted(known ^ found):
    print(f"{name}: {'no name users know; leave the prefix out' if name in found else 'is in no source any more'}")
sys.exit(1 if known != found else 0)
