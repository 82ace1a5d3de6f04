#!/usr/bin/env python3
"""Proves that each known shape of levels has a conformance case and a row in the documents, and each row a shape.

Usage: check_level_shapes.py ROOT
"""
import pathlib
import re
import sys


def main(root):
    source = (root / "Host/Src/Otio/Levels/LevelShapes.cpp").read_text(encoding="utf-8")
    table = source[source.index("kShapes[] = {"):source.index("\n};")]
    shapes = re.findall(r'\{"([a-z-]+)",\s*Form::', table)
    document = (root / "Docs/OTIO.md").read_text(encoding="utf-8")
    section = document[document.index("### Mixing: what other programs leave"):document.index("## What is rendered")]
    rows = re.findall(r"^\| `([a-z-]+)` \| (?:A parameter )?`", section, re.MULTILINE)
    faults = [f"{name}: there is no case level-{name}" for name in shapes
              if not (root / f"Tests/Conformance/otio/cases/level-{name}.otio").is_file()]
    if shapes != rows:
        faults.append(f"LevelShapes.cpp has {shapes}, Docs/OTIO.md has {rows}")
    if len(shapes) < 5:
        faults.append("the table of shapes was not found")
    print("\n".join(faults) if faults else f"{len(shapes)} shapes, each with a case and a row")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1])))
