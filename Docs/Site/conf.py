"""The site of the documents; make_site.py builds it."""
import ast
import inspect
import os
import pathlib
import re
import xml.etree.ElementTree

from columns import list_columns
from docutils import nodes
from sphinx import addnodes
from sphinx.domains.cpp import ASTDeclaration, CPPDomain
from sphinx.transforms import SphinxTransform

ROOT = pathlib.Path(os.environ["SONARO_ROOT"])

project = "Sonaro"
author = "the authors of Sonaro"
copyright = author  # pylint: disable=redefined-builtin
release = re.search(r"\tVERSION (\S+)", (ROOT / "CMakeLists.txt").read_text()).group(1)
html_title = f"Sonaro {release}"

extensions = ["myst_parser", "sphinx.ext.autodoc", "breathe"]
myst_heading_anchors = 4
breathe_projects = {"sonaro": os.environ["SONARO_DOXYGEN_XML"]}
breathe_default_project = "sonaro"
# The compiled module of the Python package need not be built.
autodoc_mock_imports = ["sonaro._sonaro"]
autodoc_member_order = "bysource"
python_use_unqualified_type_names = True

html_theme = "furo"
html_static_path = ["site.css", "site.js"]
html_css_files = ["site.css"]
html_js_files = ["site.js"]
# For readers whose system is dark, too: the style sheet of Debian's furo has its colours for those who chose dark alone.
html_theme_options = {"dark_css_variables": {
    "color-foreground-primary": "#e4e6e8", "color-foreground-secondary": "#a3a8ad", "color-foreground-muted": "#868b90",
    "color-foreground-border": "#62666a", "color-background-primary": "#15171a", "color-background-secondary": "#1c1f23",
    "color-background-hover": "#24282d", "color-background-hover--transparent": "#24282d00", "color-background-border": "#34393f",
    "color-background-item": "#444a51", "color-brand-primary": "#62a8f5", "color-brand-content": "#62a8f5",
    "color-highlighted-background": "#123f66", "color-highlight-on-target": "#3a3712", "color-admonition-background": "#1c1f23",
    "color-card-border": "#1c1f23", "color-card-background": "#1c1f23", "color-card-marginals-background": "#24282d",
    "color-api-keyword": "#a3a8ad", "color-problematic": "#f2958c", "color-guilabel-background": "#123f6680", "color-guilabel-border": "#12426680"}}
html_show_sourcelink = False
html_show_sphinx = False
pygments_style = "friendly"
pygments_dark_style = "monokai"
# Options begin with two hyphens.
smartquotes = False
nitpicky = True
# Types of other libraries, and words of Python's hints, are in no reference that is at hand.
nitpick_ignore_regex = [("cpp:.*", r".*"), ("py:(class|obj)", r"(?!sonaro\.).*")]


def read_stubs():
    """Signatures as the stubs have them, by qualified name."""
    signatures = {}
    for path in sorted((ROOT / "Python" / "sonaro").glob("*.pyi")):
        for node in ast.parse(path.read_text()).body:
            members = [(f"{node.name}.", child) for child in node.body] if isinstance(node, ast.ClassDef) else [("", node)]
            for prefix, member in members:
                if isinstance(member, ast.FunctionDef):
                    arguments = [argument for argument in member.args.args if argument.arg == "self"]
                    for argument in arguments:
                        member.args.args.remove(argument)
                    returned = ast.unparse(member.returns) if member.returns else None
                    # Of overloads, the longest is the one that has all arguments.
                    signature = (f"({ast.unparse(member.args)})", returned)
                    module = "sonaro." if path.name.startswith("_") else f"sonaro.{path.stem}."
                    name = f"{module}{prefix}{member.name}"
                    signatures[name] = max(signature, signatures.get(name, ("", None)), key=lambda pair: len(pair[0]))
    return signatures


def read_dataclasses():
    """Signatures of the dataclasses of sequences, with types and defaults as they are written there."""
    signatures = {}
    for node in ast.parse((ROOT / "Python/sonaro/_sequence.py").read_text()).body:
        if isinstance(node, ast.ClassDef) and node.decorator_list:
            fields = [child for child in node.body if isinstance(child, ast.AnnAssign)]
            texts = [re.sub(r"field\(default_factory=(list|dict)\)", lambda found: {"list": "[]", "dict": "{}"}[found.group(1)],
                            ast.unparse(child)) for child in fields]
            signatures[f"sonaro.{node.name}"] = (f"({', '.join(texts)})", None)
    return signatures


SIGNATURES = read_stubs() | read_dataclasses()


def give_signature(_app, _what, name, _object, _options, signature, returned):
    return SIGNATURES.get(name, (signature, returned))


def give_lists(_app, what, _name, documented, _options, lines):
    # What timelines and sequences have in common once they are opened.
    base = documented.__base__ if what == "class" else object
    if base.__module__ == "sonaro._readable":
        lines += inspect.getdoc(base).splitlines() + [""]
    lines[:] = list_columns(lines, lambda word, text: f"- **{word}**: {text}", lambda text: re.sub(r"([*`|\\])", r"\\\1", text))


def list_cpp_names():
    """What pages may call each name of the reference of C++ by: the name with any part of its namespaces and classes, where no
    other one is called so."""
    index = xml.etree.ElementTree.parse(pathlib.Path(os.environ["SONARO_DOXYGEN_XML"]) / "index.xml").getroot()
    found = {}
    for compound in index:
        full = compound.findtext("name")
        members = {member.findtext("name") for member in compound.iterfind("member")
                   if compound.get("kind") != "file" and member.get("kind") in ("variable", "function", "enum")}
        for name in [full] * (compound.get("kind") in ("class", "struct")) + [f"{full}::{member}" for member in members]:
            parts = name.split("::")
            # Constructors are called as their classes.
            if parts[-2:-1] != parts[-1:] and re.match(r"[mk]?[A-Z]", parts[-1]):
                for start in range(len(parts)):
                    found.setdefault("::".join(parts[start:]), set()).add(name)
    return {short: ("cpp", "any", next(iter(full))) for short, full in found.items() if len(full) == 1}


def list_python_names():
    exported = next(ast.literal_eval(node.value) for node in ast.parse((ROOT / "Python/sonaro/__init__.py").read_text()).body
                    if isinstance(node, ast.Assign) and node.targets[0].id == "__all__")
    names = [name for name in exported if not name.startswith("__")]
    return {called: ("py", "obj", f"sonaro.{name}") for name in names
            for called in [f"sonaro.{name}", *([name] if name[0].isupper() else [])]}


class LinkNames(SphinxTransform):
    """The first mention of a name on a page for developers leads to the reference, and a page that a comment names by its path
    to that page."""

    default_priority = 400
    cpp_pages = re.compile(r"howto/|(binaural|playback|sequence|serve|terms)$")
    cpp_names = list_cpp_names()
    python_pages = re.compile(r"(python|farm)$")
    python_names = list_python_names()

    def refer(self, role, content):
        domain, kind, target = role
        reference = addnodes.pending_xref("", refdomain=domain, reftype=kind, reftarget=target, refdoc=self.env.docname,
                                          refexplicit=False, refwarn=False)
        reference += content
        return reference

    def apply(self):
        seen, page = set(), self.env.docname
        names = self.python_names if self.python_pages.match(page) else self.cpp_names if self.cpp_pages.match(page) else {}
        for literal in list(self.document.findall(nodes.literal)):
            name = literal.astext()
            if name in names and name not in seen and not isinstance(literal.parent, (nodes.reference, nodes.title)):
                seen.add(name)
                literal.replace_self(self.refer(names[name], literal.deepcopy()))
        for text in list(self.document.findall(nodes.Text)):
            parts = re.split(r"Docs/([\w-]+)\.md", text.astext())
            if len(parts) > 1 and isinstance(text.parent, nodes.paragraph):
                text.parent.replace(text, [self.refer(("std", "doc", f"/{part}"), nodes.inline("", part)) if number % 2
                                           else nodes.Text(part) for number, part in enumerate(parts)])


def remember_ids():
    """As later versions of Sphinx do: each reference compares the identifiers of all that have its name."""
    make = ASTDeclaration.get_newest_id

    def get_newest_id(self):
        if "newest_id" not in vars(self):
            self.newest_id = make(self)
        return self.newest_id

    ASTDeclaration.get_newest_id = get_newest_id


class SearchedCppDomain(CPPDomain):
    """Without parameters, whose names are noise in a search."""

    def get_objects(self):
        return (found for found in super().get_objects() if found[2] not in ("functionParam", "templateParam"))


def setup(app):
    app.connect("autodoc-process-signature", give_signature)
    app.connect("autodoc-process-docstring", give_lists)
    app.add_transform(LinkNames)
    app.add_domain(SearchedCppDomain, override=True)
    remember_ids()
