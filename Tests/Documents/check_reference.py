#!/usr/bin/env python3
"""The site's reference has every public class of C++ with all comments of headers, every public name of Python and every key of
the metadata; how-tos link to it.

Usage: check_reference.py FOLDER    as make_site.py has written it
"""
import ast
import collections
import html
import json
import pathlib
import re
import sys
import xml.etree.ElementTree

ROOT = pathlib.Path(__file__).resolve().parents[2]


def read_words(text):
    """Letters and digits alone, as signs are written in several ways."""
    return re.sub(r"[\W_]+", "", text)


def list_comments():
    """The first line of each comment right above what headers declare in a namespace, up to the path of a page, which is shown by
    its title; and its place."""
    for folder in (ROOT / "API/Inc", *(ROOT / "Platform").glob("*/Inc"), ROOT / "Host/Inc"):
        for path in sorted(folder.rglob("*.h")):
            text = path.read_text()
            for comment in re.finditer(r"(?<=\n\n)// (.*)\n(?://.*\n)*(?=[\w\[])(?!namespace|template class|template <>\nstruct std::|extern)", text):
                yield comment.group(1).split("Docs/")[0], f"{path.relative_to(ROOT)}:{text.count(chr(10), 0, comment.start()) + 1}"


def list_lost_comments(pages):
    words = read_words(html.unescape(re.sub(r"<[^>]*>", "", pages)))
    return [f"the comment of {place}" for text, place in list_comments() if read_words(text) not in words]


def list_keys(schema):
    """Of the objects within a schema, the keys."""
    if not isinstance(schema, (dict, list)):
        return []
    if isinstance(schema, list):
        return [key for part in schema for key in list_keys(part)]
    return [*schema.get("properties", {}), *(key for part in schema.values() for key in list_keys(part))]


def list_lost_keys(page):
    schema = json.loads((ROOT / "Docs/otio-metadata.schema.json").read_text())
    rows = re.findall(r'<tr class="row-\w+"><td><p><code[^>]*><span class="pre">(\w+)</span>', page)
    lost = collections.Counter(list_keys(schema["$defs"])) - collections.Counter(rows)
    return [f"the key {key} of metadata ({count})" for key, count in lost.items()]


def main():
    folder = pathlib.Path(sys.argv[1])
    pages = "".join(path.read_text() for path in sorted((folder / "html/reference/api").glob("*.html")))
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
    lacking += list_lost_comments(pages) + list_lost_keys((folder / "html/reference/metadata.html").read_text())
    lacking += [f"links from {path.relative_to(folder)}" for path in sorted((folder / "html/howto").glob("*.html"))
                if not re.search(r'href="\.\./reference/api/[^"]*"[^>]*><code', path.read_text())]
    if lacking or not classes:
        sys.exit(f"The reference lacks {', '.join(lacking)}")
    print(f"The reference has {len(classes)} classes of C++ and {len(exported) - 1} names of Python")


main()
