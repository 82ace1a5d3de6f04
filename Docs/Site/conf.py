"""The site of the documents; make_site.py builds it."""
import ast
import os
import pathlib
import re

from columns import list_columns

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


SIGNATURES = read_stubs()


def give_signature(_app, _what, name, _object, _options, signature, returned):
    return SIGNATURES.get(name, (signature, returned))


def give_lists(_app, _what, _name, _object, _options, lines):
    lines[:] = list_columns(lines, lambda word, text: f"- **{word}**: {text}", lambda text: re.sub(r"([*`|\\])", r"\\\1", text))


def setup(app):
    app.connect("autodoc-process-signature", give_signature)
    app.connect("autodoc-process-docstring", give_lists)
