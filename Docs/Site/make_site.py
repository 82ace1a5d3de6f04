#!/usr/bin/env python3
"""Builds the documents as a site. Usage: make_site.py OUTPUT_FOLDER

OUTPUT_FOLDER/html is the site. The pages of Docs/ are its sources as they are; what is made from other sources, the
reference of C++ and of the metadata, is beside them in OUTPUT_FOLDER/tree. Nothing that is compiled is needed.
"""
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import xml.etree.ElementTree

from doxygen_comments import mark_header

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent.parent
# Folders of public headers, each of which gets a page, or a page for each of its rooms.
LIBRARIES = [ROOT / "API/Inc/Sonaro", *sorted((ROOT / "Platform").glob("*/Inc/*"))]
ROOMS = sorted(folder for folder in (ROOT / "Host/Inc/SonaroHost").iterdir() if folder.is_dir())


def link_sources(tree):
    """The documents, and what they link to, as links into the sources, so that pages are found beside made ones."""
    for path in sorted((ROOT / "Docs").rglob("*")):
        if path.suffix in (".md", ".svg", ".json") and HERE not in path.parents:
            target = tree / path.relative_to(ROOT)
            target.parent.mkdir(parents=True, exist_ok=True)
            target.symlink_to(path)
    for name in ("API", "CONTRIBUTING.md", "Examples", "Host", "LICENSES-OF-OTHERS.md", "Platform", "Scripts", "Src"):
        (tree / name).symlink_to(ROOT / name)
    for path in ROOT.glob("Docs/*.py"):
        (tree / "Docs" / path.name).symlink_to(path)


def run_doxygen(folder):
    """On copies of the headers, marked here: a filter of Doxygen's would be a process for each of them."""
    headers = folder / "headers"
    for path in (path for source in LIBRARIES + ROOMS for path in source.rglob("*.h")):
        copy = headers / path.relative_to(ROOT)
        copy.parent.mkdir(parents=True, exist_ok=True)
        copy.write_text(mark_header(path.read_text()))
    roots = {headers / source.relative_to(ROOT).parents[source in ROOMS] for source in LIBRARIES + ROOMS}
    settings = (HERE / "Doxyfile").read_text() + f"""
INPUT = {headers}
OUTPUT_DIRECTORY = {folder}
STRIP_FROM_PATH = {" ".join(sorted(map(str, roots)))}
"""
    subprocess.run(["doxygen", "-"], input=settings, text=True, check=True)


def read_inline(element):
    """The text of an element up to its lists, with what is bold."""
    text = re.sub(r"([*_`<\[\\])", r"\\\1", element.text or "")
    for child in element:
        if child.tag not in ("itemizedlist", "programlisting"):
            inner = read_inline(child)
            text += f"**{inner}**" if child.tag == "bold" else inner
        text += re.sub(r"([*_`<\[\\])", r"\\\1", child.tail or "")
    return " ".join(text.split())


def read_text(description):
    """A description of Doxygen as paragraphs and lists of Markdown."""
    paragraphs = []
    for paragraph in description.iterfind("para"):
        items = [" ".join(read_inline(part) for part in item.iterfind("para"))
                 for item in paragraph.iterfind("itemizedlist/listitem")]
        paragraphs += [read_inline(paragraph), "\n".join(f"- {item}" for item in items)]
    return "\n\n".join(filter(None, paragraphs))


def read_comment(element):
    """What is said of it; Doxygen takes a comment of one line as the brief description."""
    parts = (read_text(element.find(f"{kind}description")) for kind in ("brief", "detailed"))
    return "\n\n".join(filter(None, parts))


def describe_function(member):
    """By Sphinx itself, since Breathe does not tell overloads apart in every case."""
    types = [" ".join(" ".join("".join(part.itertext()).split()) for part in (parameter.find("type"), parameter.find("declname"))
                      if part is not None) for parameter in member.iterfind("templateparamlist/param")]
    template = f"template <{', '.join(types)}> " if types else ""
    declaration = member.findtext("definition") + member.findtext("argsstring")
    return [f"```{{cpp:function}} {template}{declaration}", read_comment(member), "```", ""]


def link_compound(folder, refid, part):
    """A compound, and those that it is shown with: classes within classes."""
    (part / f"{refid}.xml").symlink_to(folder / f"{refid}.xml")
    if not refid.startswith("namespace"):
        for inner in xml.etree.ElementTree.parse(folder / f"{refid}.xml").getroot().iter("innerclass"):
            link_compound(folder, inner.get("refid"), part)


def write_part(folder, index, entry):
    """An index of one compound in a folder of its own: Breathe goes through all of an index for each directive."""
    part = folder / "parts" / entry.get("refid")
    part.mkdir(parents=True)
    root = xml.etree.ElementTree.Element(index.tag, index.attrib)
    root.append(entry)
    xml.etree.ElementTree.ElementTree(root).write(part / "index.xml", encoding="utf-8", xml_declaration=True)
    link_compound(folder, entry.get("refid"), part)
    return f":path: {part}"


def list_headers(folder):
    """What Doxygen found, by the header it is in: the lines of the page about it, its classes first."""
    index = xml.etree.ElementTree.parse(folder / "index.xml").getroot()
    kinds = {entry.findtext("name"): entry.get("kind") for entry in index}
    texts, classes, others = {}, {}, {}
    for entry in index:
        compound = xml.etree.ElementTree.parse(folder / f"{entry.get('refid')}.xml").getroot().find("compounddef")
        name, kind, location = compound.findtext("compoundname"), entry.get("kind"), compound.find("location")
        if kind == "file":
            texts[location.get("file")] = [read_comment(compound), ""]
            for member in compound.iterfind("sectiondef/memberdef[@kind='typedef']"):
                others.setdefault(location.get("file"), []).extend(
                    [f"```{{doxygentypedef}} {member.findtext('name')}", write_part(folder, index, entry), "```", ""])
        # Classes within classes are shown in these.
        elif kind in ("class", "struct") and kinds.get(name.rpartition("::")[0]) not in ("class", "struct"):
            classes.setdefault(location.get("file"), []).extend(
                [f"```{{doxygen{kind}}} {name}", write_part(folder, index, entry), ":members:", ":undoc-members:", "```", ""])
        elif kind == "namespace" and "@" not in name:
            path = write_part(folder, index, entry)
            for member in compound.iter("memberdef"):
                lines = others.setdefault(member.find("location").get("file"), [])
                if member.get("kind") == "function":
                    lines += describe_function(member)
                elif "<" not in member.findtext("name", "<"):
                    lines += [f"```{{doxygen{member.get('kind')}}} {name}::{member.findtext('name')}", path, "```", ""]
    return {path: texts[path] + classes.get(path, []) + others.get(path, []) for path in texts}


def write_api_pages(folder, doxygen):
    folder.mkdir(parents=True, exist_ok=True)
    headers = list_headers(doxygen / "xml")
    for library in LIBRARIES + ROOMS:
        name = library.relative_to(library.parents[1] if library in ROOMS else library.parent)
        paths = sorted(f"{name}/{path.relative_to(library)}" for path in library.rglob("*.h"))
        lines = [f"# {name}", "", f"{len(paths)} headers, included as `<{name}/...>`.", ""]
        for path in paths:
            lines += [f"## {path.removeprefix(f'{name}/')}", "", *headers[path]]
        (folder / f"{str(name).replace('/', '-')}.md").write_text("\n".join(lines))


def describe_type(schema, title=None):
    """A schema of a value in words. title: of the section that has the keys of the objects in it."""
    if "$ref" in schema:
        name = schema["$ref"].rsplit("/", 1)[-1]
        return f"[{name}](#{name.lower()})"
    parts = [describe_type(choice, title) for choice in schema.get("anyOf", []) + schema.get("oneOf", [])]
    if "enum" in schema:
        parts += [f"`{json.dumps(value)}`" for value in schema["enum"]]
    elif "const" in schema:
        parts.append(f"`{json.dumps(schema['const'])}`")
    elif "type" in schema:
        kinds = schema["type"] if isinstance(schema["type"], list) else [schema["type"]]
        if "properties" in schema and title:
            kinds = [f"[{kind}](#{title.lower().replace(' ', '-')})" if kind == "object" else kind for kind in kinds]
        for kind, key in (("array", "items"), ("object", "additionalProperties")):
            if isinstance(schema.get(key), dict):
                kinds = [f"{word} of {describe_type(schema[key], title)}" if word == kind else word for word in kinds]
        parts.append(" or ".join(kinds))
    limits = [f"{word} {schema[key]}" for key, word in (("minimum", "from"), ("exclusiveMinimum", "above"), ("maximum", "to"),
                                                        ("exclusiveMaximum", "below")) if key in schema]
    return ", or ".join(parts) + (f", {' '.join(limits)}" if limits else "")


def list_properties(schema, title, definitions):
    """definitions: what the schema refers to, by name."""
    lines = ["| Key | Value | Meaning |", "|---|---|---|"]
    for key, value in schema["properties"].items():
        value = {**definitions.get(value.get("$ref", "").rsplit("/", 1)[-1], {}), **value}
        needed = " Required." if key in schema.get("required", []) else ""
        default = f" Default: `{json.dumps(value['default'])}`." if "default" in value else ""
        kind = describe_type({"$ref": value["$ref"]} if "$ref" in value else value, f"{title} {key}")
        lines.append(f"| `{key}` | {kind} | {value.get('description', '')}{needed}{default} |")
    return lines


def find_objects(schema):
    """Objects with properties within a schema that is none itself."""
    if "properties" in schema:
        return [schema]
    below = [*schema.get("anyOf", []), *schema.get("oneOf", []), *([schema["items"]] if "items" in schema else [])]
    return [found for part in below if isinstance(part, dict) for found in find_objects(part)]


def describe_objects(schema, title, definitions, level):
    """Tables of the objects within a schema, and sections of those within these."""
    lines = []
    for found in find_objects(schema):
        lines += [*list_properties(found, title, definitions), ""]
        for key, value in found["properties"].items():
            if find_objects(value):
                lines += [f"{'#' * level} {title} {key}", "", value.get("description", ""), "",
                          *describe_objects(value, f"{title} {key}", definitions, level + 1)]
    return lines


def write_metadata_page(path):
    schema = json.loads((ROOT / "Docs/otio-metadata.schema.json").read_text())
    lines = ["# Keys of `metadata.sonaro`", "", schema["description"].replace("$defs", "`$defs`"), "",
             "Made from the [schema](../otio-metadata.schema.json). [OpenTimelineIO files](../OTIO.md#mixing-metadatasonaro) "
             "says how they are rendered.", ""]
    for name, part in schema["$defs"].items():
        lines += [f"## {name}", "", part.get("description", ""), "", f"Value: {describe_type(part)}", "",
                  *describe_objects(part, name, schema["$defs"], 3)]
    path.write_text("\n".join(lines))


def main():
    output = pathlib.Path(sys.argv[1]).resolve()
    tree = output / "tree"
    for folder in (tree, output / "doxygen"):
        shutil.rmtree(folder, ignore_errors=True)
    link_sources(tree)
    run_doxygen(output / "doxygen")
    write_api_pages(tree / "Docs/reference/api", output / "doxygen")
    write_metadata_page(tree / "Docs/reference/metadata.md")
    environment = {**os.environ, "SONARO_ROOT": str(ROOT), "SONARO_DOXYGEN_XML": str(output / "doxygen/xml"),
                   "PYTHONPATH": f"{HERE}:{ROOT / 'Python'}", "PYTHONDONTWRITEBYTECODE": "1"}
    subprocess.run([sys.executable, "-m", "sphinx", "-q", "-W", "--keep-going", "-j", "auto", "-c", HERE, "-d", output / "doctrees",
                    tree / "Docs", output / "html"], check=True, env=environment)
    print(f"The site: {output / 'html/index.html'}")


if __name__ == "__main__":
    main()
