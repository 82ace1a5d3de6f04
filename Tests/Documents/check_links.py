#!/usr/bin/env python3
"""Links of documents lead somewhere: those of Markdown pages, and of the HTML pages of a site.

Usage: check_links.py FILE_OR_FOLDER...
Addresses beyond the disk are only read: they have to be https or http, with a host.
"""
import html.parser
import pathlib
import re
import sys
import urllib.parse


def make_anchor(heading):
    """As viewers of Markdown, and the site, name headings."""
    text = re.sub(r"\[([^]]*)\]\([^)]*\)", r"\1", heading).replace("`", "").strip().lower()
    return re.sub(r"[^\w\- ]", "", text).replace(" ", "-")


class Html(html.parser.HTMLParser):
    def __init__(self, text):
        super().__init__()
        self.anchors, self.links = set(), []
        self.feed(text)

    def handle_starttag(self, tag, attrs):
        attributes = dict(attrs)
        self.anchors.update(filter(None, [attributes.get("id"), attributes.get("name") if tag == "a" else None]))
        self.links += [attributes[key] for key in ("href", "src") if attributes.get(key)]


class Markdown:
    def __init__(self, text):
        text = re.sub(r"^```.*?^```+$", "", text, flags=re.MULTILINE | re.DOTALL)
        self.anchors = {make_anchor(heading) for heading in re.findall(r"^#+ (.*)$", text, re.MULTILINE)}
        self.links = re.findall(r"\]\(([^)\s]+)\)", re.sub(r"`[^`\n]*`", "", text))


class Site:
    def __init__(self):
        self.pages = {}

    def read(self, path):
        if path not in self.pages:
            self.pages[path] = (Html if path.suffix == ".html" else Markdown)(path.read_text())
        return self.pages[path]

    def find_fault(self, page, link):
        address = urllib.parse.urlsplit(link)
        if address.scheme in ("http", "https"):
            return None if address.hostname else "has no host"
        if address.scheme in ("data", "mailto"):
            return None
        if address.scheme or address.netloc:
            return f"has the scheme {address.scheme!r}"
        target = (page.parent / urllib.parse.unquote(address.path)).resolve() if address.path else page
        if target.is_dir() and page.suffix == ".html":
            target /= "index.html"
        if not target.exists():
            return "leads nowhere"
        anchor = urllib.parse.unquote(address.fragment)
        if anchor and target.suffix in (".html", ".md") and anchor not in self.read(target).anchors:
            return "leads to a place that the page lacks"
        return None


def main():
    paths = []
    for name in sys.argv[1:]:
        path = pathlib.Path(name).resolve()
        paths += sorted([*path.rglob("*.md"), *path.rglob("*.html")]) if path.is_dir() else [path]
    site, count, faults = Site(), 0, []
    for path in paths:
        for link in site.read(path).links:
            count += 1
            fault = site.find_fault(path, link)
            faults += [f"{path}: {link} {fault}"] if fault else []
    print("\n".join(faults) or f"{count} links of {len(paths)} pages lead somewhere")
    return 1 if faults or not count else 0


if __name__ == "__main__":
    sys.exit(main())
