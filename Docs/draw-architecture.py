#!/usr/bin/env python3
"""Draws architecture.svg from the #include lines: every room, on the lowest floor that its includes allow.

An arrow leads from a room to one that it includes; arrows that follow from others are left out.
Usage: draw-architecture.py [--check]    --check writes nothing and fails when the picture is out of date
"""
import os
import sys

sys.dont_write_bytecode = True
HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(HERE)
sys.path.insert(0, os.path.join(ROOT, "Tests", "House"))
from check_includes import include_roots, includes, Rooms, sources

PICTURE = os.path.join(HERE, "architecture.svg")
BOX = (128, 34)
GAP = (22, 46)
MARGIN = 24
COLOURS = {"companion": "#dfe9f5", "engine": "#e3f1e0", "host": "#fbeed5", "top": "#f3dfe6"}


def read_uses():
    rooms = Rooms()
    roots = include_roots(ROOT)
    uses = {}
    for path in sources(ROOT):
        if path.startswith(("Benchmarks/", "Examples/", "Docs/", "Python/")):
            continue
        room = rooms.find(path)
        users = uses.setdefault(room, set())
        for _, _, target in includes(ROOT, path, roots):
            if target and rooms.find(target) != room:
                users.add(rooms.find(target))
    return uses


def kind_of(room):
    if room == "top":
        return "top"
    if room.startswith("Host "):
        return "host"
    return "companion" if os.path.isdir(os.path.join(ROOT, "Platform", room)) else "engine"


def label_of(room):
    return "Command" if room == "top" else room.removeprefix("Host ")


def reach(uses, room):
    found = set()
    for other in uses.get(room, ()):
        found |= {other} | reach(uses, other)
    return found


def reduce(uses):
    """Without the arrows that follow from others."""
    return {room: {to for to in targets
                   if not any(to in reach(uses, other) for other in targets if other != to)}
            for room, targets in uses.items()}


def place(uses):
    """The floor of each room, and its place among those of one floor, the host's on the right,
    near the middle of what it uses."""
    floors = {}

    def floor(room):
        if room not in floors:
            floors[room] = 1 + max((floor(other) for other in uses.get(room, ())), default=-1)
        return floors[room]

    rows = {}
    for room in sorted(uses):
        rows.setdefault(floor(room), []).append(room)
    widest = max(len(row) for row in rows.values())
    centres = {}
    for level in sorted(rows):
        def wish(room):
            below = [centres[other] for other in uses[room]]
            return (kind_of(room) in ("host", "top"), sum(below) / len(below) if below else widest / 2, room)
        row = sorted(rows[level], key=wish)
        for index, room in enumerate(row):
            centres[room] = (widest - len(row)) / 2 + index + 0.5
    return floors, centres, widest, len(rows)


def draw():
    uses = reduce(read_uses())
    floors, centres, columns, rows = place(uses)
    step = (BOX[0] + GAP[0], BOX[1] + GAP[1])
    size = (2 * MARGIN + columns * step[0], 2 * MARGIN + rows * step[1] - GAP[1])

    def middle(room):
        return MARGIN + centres[room] * step[0]

    def top(room):
        return size[1] - MARGIN - BOX[1] - floors[room] * step[1]

    lines = [
        f'<svg xmlns="http://www.w3.org/2000/svg" width="{size[0]}" height="{size[1]}"'
        ' font-family="sans-serif" font-size="13">',
        f'<rect width="{size[0]}" height="{size[1]}" fill="white"/>',
        '<defs><marker id="head" viewBox="0 0 8 8" refX="8" refY="4" markerWidth="7" markerHeight="7" orient="auto">'
        '<path d="M0,0 L8,4 L0,8 z" fill="#777"/></marker></defs>',
    ]
    for room in sorted(uses):
        for to in sorted(uses[room]):
            start, end = top(room) + BOX[1], top(to)
            bend = (end - start) / 2
            lines.append(
                f'<path d="M{middle(room):.0f},{start} C{middle(room):.0f},{start + bend:.0f} '
                f'{middle(to):.0f},{end - bend:.0f} {middle(to):.0f},{end}" '
                'fill="none" stroke="#999" marker-end="url(#head)"/>')
    for room in sorted(uses):
        lines.append(
            f'<rect x="{middle(room) - BOX[0] / 2:.0f}" y="{top(room)}" width="{BOX[0]}" height="{BOX[1]}" rx="5" '
            f'fill="{COLOURS[kind_of(room)]}" stroke="#777"/>')
        lines.append(
            f'<text x="{middle(room):.0f}" y="{top(room) + 22}" text-anchor="middle">{label_of(room)}</text>')
    return "\n".join(lines + ["</svg>", ""])


def main():
    picture = draw()
    if "--check" not in sys.argv:
        with open(PICTURE, "w", encoding="utf-8") as file:
            file.write(picture)
        return 0
    with open(PICTURE, encoding="utf-8") as file:
        if file.read() != picture:
            print("Docs/architecture.svg is out of date; run Docs/draw-architecture.py", file=sys.stderr)
            return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
