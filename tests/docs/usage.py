#!/usr/bin/env python3
"""Fails unless the README shows the usage text of the program as it prints it.

Usage: usage.py README PROGRAM
"""

import difflib
import re
import subprocess
import sys

readme, program = sys.argv[1:]
with open(readme, encoding="utf-8") as file:
    blocks = re.findall(r"^```\n(.*?)^```$", file.read(), re.MULTILINE | re.DOTALL)
shown = [block for block in blocks if "cmd_qvre usage" in block]
printed = subprocess.run([program], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True, check=True).stdout
if len(shown) != 1:
    sys.exit(f"{readme}: {len(shown)} blocks with the usage text")
difference = list(difflib.unified_diff(shown[0].splitlines(), printed.splitlines(), readme, program, lineterm=""))
if difference:
    sys.exit("\n".join(difference))
