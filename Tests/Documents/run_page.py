#!/usr/bin/env python3
"""Does what a page of the documents says: writes its files and runs its code, block after block, in a fresh folder.

Usage: run_page.py PAGE COMMAND PREFIX MEDIA_FOLDER COMPILER
    COMMAND        the program "sonaro"
    PREFIX         an installed copy, which CMake finds
    MEDIA_FOLDER   the files that pages use without making them; see make_media.py

What becomes of a block, by what is before it and by its language:

    <!-- not run: REASON -->    skipped, and listed with the reason
    a paragraph "... `NAME`:" or "... `NAME`."   written into the file NAME, where NAME has an ending
    a paragraph that links a source and ends in "whole ...:"   is that source, and is written into the file as above
    <!-- from: PATH -->         an excerpt of that source, which another test builds; indentation aside
    sh          run by bash; any failure ends it
    python      run in this interpreter; the blocks of a page share their variables
    cmake       configured and built in a project with an empty program "editor"
    json        a timeline or a part of one is read by "sonaro info", a list of effects rendered
    {directive} left to the builder of the site
Ends with 77, for "skipped", where the build lacks a part that the page needs.
"""
import importlib.util
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import textwrap

ROOT = pathlib.Path(__file__).resolve().parents[2]
SKIPPED = 77
# What pages need beyond the plain command, in the words of "sonaro --features", by what gives that away.
NEEDS = {"Movies": r"\.(mov|mp4)\b", "LV2 plugins": r"lv2plug\.in", "Serving": r'"serve"', "SOFA files": r"\.sofa\b"}


class Block:
    def __init__(self, language, code, line, before):
        self.language, self.code, self.line = language, code, line
        self.comments = dict(re.findall(r"<!-- ([\w ]+): (.*?) -->", before, re.DOTALL))
        paragraph = re.sub(r"<!--.*?-->", "", before, flags=re.DOTALL).strip().split("\n\n")[-1].strip()
        name = re.search(r"`([\w/-]+\.\w+)`[:.]$", paragraph)
        self.file = name and name.group(1)
        whole = re.search(r"\]\(([^)]+\.cpp)\), whole\b", paragraph)
        self.source = whole and whole.group(1)


def read_blocks(text):
    """The fenced blocks of a page, each with the text from the block or the heading before it on."""
    blocks, before, code, line = [], [], None, 0
    for number, row in enumerate(text.split("\n"), 1):
        fence = re.match(r"```+(\S*)\s*(.*)$", row)
        if code is None and fence:
            language, code, line = fence.group(1), [], number
        elif code is not None and fence and not fence.group(1):
            blocks.append(Block(language, "\n".join(code) + "\n", line, "\n".join(before)))
            code, before = None, []
        elif code is not None:
            code.append(row)
        else:
            before = before + [row] if not row.startswith("#") else []
    return blocks


def complete(part):
    """Parts of timelines show what they are about; tracks without clips, and clips without media, get those of the example."""
    clip = json.loads((ROOT / "Examples/Timeline/edit.otio").read_text())["tracks"]["children"][1]["children"][0]
    if part["OTIO_SCHEMA"].startswith("Clip."):
        for key in ("source_range", "media_references", "active_media_reference_key"):
            part.setdefault(key, clip[key])
    elif part["OTIO_SCHEMA"].startswith("Track."):
        part.setdefault("children", [clip])
    for child in [part["tracks"]] if "tracks" in part else part.get("children", []):
        complete(child)


class Page:
    def __init__(self, path, command, prefix, media, compiler):
        self.path = path
        self.names = {"__name__": "page"}
        self.environment = {
            **os.environ, "PATH": f"{pathlib.Path(command).resolve().parent}:{os.environ['PATH']}",
            "CMAKE_PREFIX_PATH": prefix, "CXX": compiler, "CMAKE_GENERATOR": "Ninja", "PYTHONDONTWRITEBYTECODE": "1"}
        os.environ.update(self.environment)
        for entry in pathlib.Path(media).resolve().iterdir():
            os.symlink(entry, entry.name)
        os.symlink(ROOT / "Examples", "Examples")
        self.skipped = []

    def fail(self, block, text):
        sys.exit(f"{self.path}:{block.line}: {text}")

    def run(self, block):
        if "not run" in block.comments:
            self.skipped.append((block, block.comments["not run"]))
        elif "from" in block.comments:
            self.compare(block, (self.path.parent / block.comments["from"]).read_text())
        elif block.source and block.code != (self.path.parent / block.source).read_text():
            self.fail(block, f"is another {block.source} than the one that is built")
        elif block.file:
            pathlib.Path(block.file).write_text(block.code)
            if block.language == "json":
                self.json(block)
        elif not block.language.startswith("{"):
            getattr(self, block.language or "nothing", self.nothing)(block)

    def nothing(self, block):
        self.fail(block, f"no language that can be tried: {block.language!r}")

    def text(self, _):
        """What a program prints."""

    def compare(self, block, source):
        def lines(text):
            return "\n".join(line.strip() for line in text.strip().split("\n"))
        if lines(block.code) not in lines(source):
            self.fail(block, f"is not in {block.comments['from']}")

    def start(self, block, arguments):
        done = subprocess.run(arguments, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, errors="replace",
                              stdin=subprocess.DEVNULL, env=self.environment, check=False)
        if done.returncode != 0:
            self.fail(block, f"ended with {done.returncode}:\n{done.stdout}")

    def sh(self, block):
        self.start(block, ["bash", "-euo", "pipefail", "-c", block.code])

    def python(self, block):
        exec(compile("\n" * block.line + block.code, self.path, "exec"), self.names)  # pylint: disable=exec-used

    def cmake(self, block):
        folder = pathlib.Path(tempfile.mkdtemp(dir="."))
        (folder / "editor.cpp").write_text("int main() {}\n")
        (folder / "CMakeLists.txt").write_text(textwrap.dedent("""\
            cmake_minimum_required(VERSION 3.25)
            project(Editor LANGUAGES CXX)
            add_executable(editor editor.cpp)
            """) + block.code)
        self.sh(Block("sh", f"cmake -S {folder} -B {folder}/build && cmake --build {folder}/build", block.line, ""))

    def json(self, block):
        content = json.loads(block.code)
        if isinstance(content, list):
            pathlib.Path("effects.json").write_text(block.code)
            self.start(block, ["sonaro", "render", "music.flac", "-o", "effects.wav", "--effect-file", "effects.json"])
            return
        if content["OTIO_SCHEMA"].startswith("Effect."):
            content = {"OTIO_SCHEMA": "Track.1", "kind": "Audio", "children": [{"OTIO_SCHEMA": "Clip.2", "effects": [content]}]}
        complete(content)
        pathlib.Path("part.otio").write_text(json.dumps(content))
        self.start(block, ["sonaro", "info", "part.otio", "--json", "--media", "Examples/Media"])


def list_missing(text, command, media):
    features = subprocess.run([command, "--features"], capture_output=True, text=True, check=True).stdout
    missing = [name for name, pattern in NEEDS.items()
               if re.search(pattern, text) and not re.search(rf"^ +{name} +yes", features, re.MULTILINE)]
    if "import sonaro" in text and not importlib.util.find_spec("sonaro"):
        missing.append("the Python package")
    missing += [name for name in re.findall(r"[\w-]+\.(?:sofa|mov|mp3)\b", text) if not (media / name).exists()]
    return missing


def main():
    path, command, prefix, media, compiler = sys.argv[1:]
    path, prefix, media, command = pathlib.Path(path).resolve(), *map(os.path.abspath, (prefix, media, command))
    text = path.read_text()
    blocks = read_blocks(text)
    missing = list_missing("".join(block.code for block in blocks), command, pathlib.Path(media))
    if missing:
        print(f"{path.name} is not tried: this build has no {', '.join(missing)}")
        return SKIPPED
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        page = Page(path, command, prefix, media, compiler)
        for block in blocks:
            page.run(block)
        os.chdir("/")
    for block, reason in page.skipped:
        print(f"{path.name}:{block.line} is not run: {reason}")
    print(f"{path.name}: {len(blocks)} blocks, {len(page.skipped)} of them not run")
    return 0


if __name__ == "__main__":
    sys.exit(main())
