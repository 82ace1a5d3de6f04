#!/usr/bin/env python3
"""The code that README.md gives of an example is the example, which another test builds and runs.

Usage: check_readme.py PROJECT_FOLDER
A paragraph that ends in "whole:" and links a source has the source after it.
"""
import re
import sys
from pathlib import Path

root = Path(sys.argv[1])
shown = re.findall(r"\]\(([^)]+\.cpp)\)[^\n]* whole:\n\n```cpp\n(.*?)```\n", (root / "README.md").read_text(), re.S)
if not shown:
    sys.exit("README.md shows no example")
for name, code in shown:
    if code != (root / name).read_text():
        sys.exit(f"README.md shows another {name} than the one that is built")
    if code.count("\n") > 40:
        sys.exit(f"{name} has {code.count(chr(10))} lines; README.md promises 40 at most")
print(f"README.md shows {', '.join(name for name, _ in shown)} as it is")
