#!/usr/bin/env python3
"""Overrides of functions that the public headers mark with SONARO_NONBLOCKING have the mark, too: the engine's and the
host's.

Usage: check_nonblocking.py PROJECT_FOLDER [--write]
With --write, what is missing is added. Planted declarations are checked first.
"""
import re
import sys
from pathlib import Path

MARK = "SONARO_NONBLOCKING"
# Meters of exports alone, whose memory grows with what they hear, a generator that waits for offline processes and
# one that decodes for them, and functions of the same name in an interface of the host's own.
UNMARKED = {
    ("Host/Src/Media/Denoise/InterleavedFile.h", "GetAudioData"),
    ("Host/Src/Media/Stretch/OmegaStretcher.h", "Process"),
    ("Host/Src/Media/Stretch/ScalerStretcher.h", "Process"),
    ("Host/Src/Render/Farm/PieceFileWriter.cpp", "SetMeterData"),
    ("Host/Src/Render/Piece/PieceRenderer.cpp", "SetMeterData"),
    ("Host/Src/Render/TrackMeters.h", "SetMeterData"),
    ("Inc/Time/OfflineAudioProcessorAudioGenerator.h", "GetAudioData"),
}
# A member function: its name, its parameters, and what stands between these and the body or the semicolon.
FUNCTION = re.compile(r"\b(\w+)\(((?:[^()/]|\([^()]*\))*)\)([^;{}()/]*)(?=[;{])")


def get_key(match):
    """The name and the number of parameters."""
    depth, count = 0, 1 if match[2].strip() else 0
    for character in match[2]:
        depth += (character in "<(") - (character in ">)")
        count += character == "," and depth == 0
    return match[1], count


def find_marked(texts):
    return {get_key(match) for text in texts for match in FUNCTION.finditer(text) if match[3].split()[:1] == [MARK]}


def find_bare(marked, text):
    """None of the marked functions is const: one that is belongs to another interface."""
    return [match for match in FUNCTION.finditer(text)
            if get_key(match) in marked and match[3].split()[-1:] == ["override"]
            and not {MARK, "const"} & set(match[3].split())]


def mend(marked, text):
    for match in reversed(find_bare(marked, text)):
        at = match.start(3) + match[3].rindex("override")
        text = f"{text[:at]}{MARK} {text[at:]}"
    return text


def find_sources(root):
    """Where classes are defined: the engine's private headers and all of the host."""
    yield from (root / "Inc").rglob("*.h")
    for suffix in ("*.h", "*.cpp"):
        yield from (root / "Host").rglob(suffix)


def check_planted():
    marked = find_marked([f"virtual void Pull(A<B, C> const& inA, int inB) {MARK} = 0; virtual int Free() = 0;"])
    assert marked == {("Pull", 2)}, marked
    for text, mended in (
            ("void Pull(A<B, C> const&, int) override;", f"void Pull(A<B, C> const&, int) {MARK} override;"),
            ("void Pull(A const&,\n\tF()) override {}", f"void Pull(A const&,\n\tF()) {MARK} override {{}}"),
            (f"void Pull(int, int) {MARK} override {{}}", None),
            ("void Pull(int) override;", None),
            ("void Pull(int, int) const override;", None),
            ("void Run() { Pull(1, 2); }", None),
            ("int Free() override;", None)):
        assert mend(marked, text) == (mended or text), text


def main():
    check_planted()
    root = Path(sys.argv[1])
    public = sorted((root / "API").rglob("*.h"))
    marked = find_marked(path.read_text() for path in public)
    if len(marked) < 20:
        sys.exit(f"only {len(marked)} functions of the public headers are marked")
    if any("const" in match[3].split() and MARK in match[3]
           for path in public for match in FUNCTION.finditer(path.read_text())):
        sys.exit("a marked function of the public headers is const, and its overrides would be passed over")
    bare = set()
    for path in public + sorted(find_sources(root)):
        name, text = str(path.relative_to(root)), path.read_text()
        bare |= {(name, match[1]) for match in find_bare(marked, text)}
        if "--write" in sys.argv and not any(name == file for file, _ in UNMARKED):
            path.write_text(mend(marked, text))
    if "--write" not in sys.argv and bare != UNMARKED:
        sys.exit("\n".join(f"{file}: {function} {'has' if (file, function) in UNMARKED else 'lacks'} {MARK}"
                           for file, function in sorted(bare ^ UNMARKED)))
    print(f"overrides of {len(marked)} functions have their mark")


main()
