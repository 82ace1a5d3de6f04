#!/usr/bin/env python3
"""The site's reference has every public class of C++, and every public name of the Python package.

Usage: check_reference.py FOLDER    as make_site.py has written it
"""
import ast
import pathlib
import re
import sys
import xml.etree.ElementTree

ROOT = pathlib.Path(__file__).resolve().parents[2]


def main():
    folder = pathlib.Path(sys.argv[1])
    pages = "".join(path.read_text() for path in (folder / "html/reference/api").glob("*.html"))
    anchors = set(re.findall(r'\bid="([^"]+)"', pages))
    index = xml.etree.ElementTree.parse(folder / "doxygen/xml/index.xml").getroot()
    classes = {compound.get("refid"): compound.findtext("name") for compound in index
               if compound.get("kind") in ("class", "struct")}
    # Doxygen writes what it knows of classes that are private to others, too.
    for refid in list(classes):
        compound = xml.etree.ElementTree.parse(folder / f"doxygen/xml/{refid}.xml").getroot().find("compounddef")
        if compound.get("prot") == "private":
            del classes[refid]
    lacking = sorted(name for refid, name in classes.items() if refid not in anchors)
    exported = next(ast.literal_eval(node.value) for node in ast.parse((ROOT / "Python/sonaro/__init__.py").read_text()).body
                    if isinstance(node, ast.Assign) and node.targets[0].id == "__all__")
    python = (folder / "html/reference/python.html").read_text()
    lacking += sorted(name for name in exported if name != "__version__" and f'id="sonaro.{name}"' not in python)
    if lacking or not classes:
        sys.exit(f"The reference lacks {', '.join(lacking)}")
    print(f"The reference has {len(classes)} classes of C++ and {len(exported) - 1} names of Python")


main()
