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
    folder.mkdir()
    settings = (HERE / "Doxyfile").read_text() + f"""
INPUT = {" ".join(map(str, LIBRARIES + ROOMS))}
OUTPUT_DIRECTORY = {folder}
INPUT_FILTER = "{sys.executable} -B {HERE / 'doxygen_comments.py'}"
STRIP_FROM_PATH = {" ".join(str(library.parent) for library in LIBRARIES)} {ROOT / "Host/Inc"}
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


def describe_function(member):
    """By Sphinx itself, since Breathe does not tell overloads apart in every case."""
    types = [" ".join(" ".join("".join(part.itertext()).split()) for part in (parameter.find("type"), parameter.find("declname"))
                      if part is not None) for parameter in member.iterfind("templateparamlist/param")]
    template = f"template <{', '.join(types)}> " if types else ""
    declaration = member.findtext("definition") + member.findtext("argsstring")
    return [f"```{{cpp:function}} {template}{declaration}", read_text(member.find("detaileddescription")), "```", ""]


def list_headers(folder):
    """What Doxygen found, by the header it is in: the lines of the page about it, its classes first."""
    index = xml.etree.ElementTree.parse(folder / "index.xml").getroot()
    kinds = {entry.findtext("name"): entry.get("kind") for entry in index}
    texts, classes, others = {}, {}, {}
    for entry in index:
        compound = xml.etree.ElementTree.parse(folder / f"{entry.get('refid')}.xml").getroot().find("compounddef")
        name, kind, location = compound.findtext("compoundname"), entry.get("kind"), compound.find("location")
        if kind == "file":
            texts[location.get("file")] = [read_text(compound.find("detaileddescription")), ""]
        # Classes within classes are shown in these.
        elif kind in ("class", "struct") and kinds.get(name.rpartition("::")[0]) not in ("class", "struct"):
            classes.setdefault(location.get("file"), []).extend(
                [f"```{{doxygen{kind}}} {name}", ":members:", ":undoc-members:", "```", ""])
        elif kind == "namespace" and "@" not in name:
            for member in compound.iter("memberdef"):
                lines = others.setdefault(member.find("location").get("file"), [])
                if member.get("kind") == "function":
                    lines += describe_function(member)
                elif "<" not in member.findtext("name", "<"):
                    lines += [f"```{{doxygen{member.get('kind')}}} {name}::{member.findtext('name')}", "```", ""]
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


def describe_type(schema):
    """A schema of a value in words."""
    if "$ref" in schema:
        name = schema["$ref"].rsplit("/", 1)[-1]
        return f"[{name}](#{name.lower()})"
    parts = [describe_type(choice) for choice in schema.get("anyOf", []) + schema.get("oneOf", [])]
    if "enum" in schema:
        parts += [f"`{json.dumps(value)}`" for value in schema["enum"]]
    elif "const" in schema:
        parts.append(f"`{json.dumps(schema['const'])}`")
    elif "type" in schema:
        kinds = schema["type"] if isinstance(schema["type"], list) else [schema["type"]]
        text = " or ".join(kinds)
        if "items" in schema:
            text += " of " + describe_type(schema["items"])
        parts.append(text)
    limits = [f"{word} {schema[key]}" for key, word in (("minimum", "from"), ("exclusiveMinimum", "above"), ("maximum", "to"),
                                                        ("exclusiveMaximum", "below")) if key in schema]
    return ", or ".join(parts) + (f", {' '.join(limits)}" if limits else "")


def list_properties(schema):
    lines = ["| Key | Value | Meaning |", "|---|---|---|"]
    for key, value in schema["properties"].items():
        needed = " Required." if key in schema.get("required", []) else ""
        default = f" Default: `{json.dumps(value['default'])}`." if "default" in value else ""
        lines.append(f"| `{key}` | {describe_type(value)} | {value.get('description', '')}{needed}{default} |")
    return lines


def find_objects(schema):
    """Objects with properties within a schema that is none itself."""
    if "properties" in schema:
        return [schema]
    below = [*schema.get("anyOf", []), *schema.get("oneOf", []), *([schema["items"]] if "items" in schema else [])]
    return [found for part in below if isinstance(part, dict) for found in find_objects(part)]


def write_metadata_page(path):
    schema = json.loads((ROOT / "Docs/otio-metadata.schema.json").read_text())
    lines = ["# Keys of `metadata.sonaro`", "", schema["description"].replace("$defs", "`$defs`"), "",
             "Made from the [schema](../otio-metadata.schema.json). [OpenTimelineIO files](../OTIO.md#mixing-metadatasonaro) "
             "says how they are rendered.", ""]
    for name, part in schema["$defs"].items():
        lines += [f"## {name}", "", part.get("description", ""), "", f"Value: {describe_type(part)}", ""]
        for found in find_objects(part):
            lines += [*list_properties(found), ""]
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
