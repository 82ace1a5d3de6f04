#!/usr/bin/env python3
"""Proves that #include lines point downward only and form no circle.

Each folder is a room, and each room stands on a floor. A file may include files of its own room and of lower floors;
rooms of one floor stay apart. A room with a list of what it uses includes nothing else of the host. Circles are those
of rooms' folders and of files, where a header and the source of its name count as one.

Usage: check_includes.py ROOT
"""
import os
import re
import sys

# From the ground up: the floors, and on each of them its rooms with their folders.
ENGINE = [
    {"zorvcore": ["Platform/zorvcore/"]},
    {"zorvmediatypes": ["Platform/zorvmediatypes/"]},
    {"zorvaccelerate": ["Platform/zorvaccelerate/"]},
    {"zorvaudiodsp": ["Platform/zorvaudiodsp/"]},
    {"zorvaudiofilters": ["Platform/zorvaudiofilters/"]},
    {"Vexilon": ["Platform/Vexilon/"]},
    {"API": ["API/Inc/"]},
    {"Core": ["Inc/AudioRender/Core/", "Src/AudioRender/Core/"]},
    {"Algorithm": ["Inc/Panner/Algorithm/"],
     "Binaural": ["Inc/Panner/Binaural/", "Src/Panner/Binaural/"],
     "Prefetch": ["Inc/Prefetch/", "Src/Prefetch/"],
     "Waveform": ["Inc/Waveform/", "Src/Waveform/"],
     "Resampler": ["Inc/Time/Resampler/", "Src/Time/Resampler/"],
     "Scaler": ["Inc/Time/Scaler/", "Src/Time/Scaler/"]},
    {"Source": ["Inc/AudioRender/Source/", "Src/AudioRender/Source/"]},
    {"Component": ["Inc/AudioRender/Component/", "Src/AudioRender/Component/"],
     "Panner": ["Inc/Panner/", "Src/Panner/"]},
    {"Track": ["Inc/AudioRender/Track/", "Src/AudioRender/Track/"]},
    {"Time": ["Inc/Time/", "Src/Time/"]},
    {"Routing": ["Inc/AudioRender/Routing/", "Src/AudioRender/Routing/"]},
    {"Factory": ["Src/AudioRender/"]},
]

# The rooms of the host, below Host/Src and Host/Inc/SonaroHost, and which of them each uses. The engine is below all.
HOST = {
    "Base": "",
    "Files": "Base",
    "Engine": "Base",
    "Automation": "Base",
    "Binaural": "Base Files",
    "Metering": "Base",
    "Effects": "Base Engine Automation",
    "Offline": "Base",
    "Media": "Base Files Engine Offline",
    "Waveform": "Base Files Engine Media",
    "Sequence": "Base Engine Automation Binaural Metering Offline Media",
    "Graph": "Base Media Sequence",
    "Otio": "Base Files",
    "OtioSequence": "Base Files Engine Automation Binaural Effects Offline Media Sequence Otio",
    "Picture": "Base Files Engine Media Waveform Sequence Otio OtioSequence",
    "Render": "Base Files Engine Automation Binaural Metering Effects Offline Media Waveform Sequence Graph Otio OtioSequence Picture",
    "Playback": "Base Files Engine Automation Metering Media Sequence Render",
    "Serve": "Base Files Engine Metering Media Waveform Sequence Otio OtioSequence Render",
}

# The rooms of the program, below Host/Command, and which of them each uses. The host is below all.
COMMAND = {
    "Terminal": "",
    "Options": "",
    "Report": "Terminal Options",
    "Called": "Terminal Options Report",
    "Features": "Terminal Report",
    "Play": "Terminal Options Report",
    "Page": "Terminal Options Report",
    "Serve": "Terminal Report",
}

# Above everything.
TOP = ["Host/Command/", "Python/", "Benchmarks/", "Examples/", "Docs/Generator/", "Tests/"]

# Those whose own lines are read. Tests include what they test.
FOLDERS = ["API", "Inc", "Src", "Platform", "Host", "Python", "Benchmarks", "Examples", "Docs/Generator"]
INCLUDE_ROOTS = ["API/Inc", "Inc", "Host/Inc", "Host/Src", "Host/Command", "Python/Src", "Tests"]


class Rooms:
    """Where each file belongs, and whom it may include."""

    def __init__(self):
        self.prefixes = []
        self.uses = {}
        below = set()
        for floor in ENGINE:
            for name, folders in floor.items():
                self.enter(name, folders, below)
            below = below | set(floor)
        for name, uses in HOST.items():
            folders = [f"Host/Inc/SonaroHost/{name}/", f"Host/Src/{name}/"]
            self.enter("Host " + name, folders, below | {"Host " + other for other in uses.split()})
        below = set(self.uses)
        for name, uses in COMMAND.items():
            self.enter("Command " + name, [f"Host/Command/{name}/"], below | {"Command " + other for other in uses.split()})
        everything = set(self.uses) | {"top"}
        self.enter("top", TOP, everything)
        self.prefixes.sort(key=lambda entry: -len(entry[0]))

    def enter(self, name, folders, uses):
        self.uses[name] = uses | {name}
        self.prefixes += [(folder, name) for folder in folders]

    def find(self, path):
        return next((name for prefix, name in self.prefixes if path.startswith(prefix)), None)


def sources(root):
    for top in FOLDERS:
        for folder, _, names in os.walk(os.path.join(root, top)):
            for name in names:
                if name.endswith((".h", ".cpp", ".inc")):
                    yield os.path.relpath(os.path.join(folder, name), root)


def include_roots(root):
    """Where the compiler looks for what is included in quotes."""
    platform = os.path.join(root, "Platform")
    return INCLUDE_ROOTS + [
        f"Platform/{name}/{folder}" for name in sorted(os.listdir(platform)) for folder in ("Inc", "Src")]


def includes(root, path, roots):
    """The line number, the text and the file of each include in quotes; the file is None when there is none."""
    with open(os.path.join(root, path), encoding="utf-8") as text:
        for number, line in enumerate(text, 1):
            match = re.match(r'\s*#\s*include\s*"([^"]+)"', line)
            if match:
                candidates = [os.path.normpath(os.path.join(base, match[1])) for base in [os.path.dirname(path)] + roots]
                yield number, match[1], next((c for c in candidates if os.path.exists(os.path.join(root, c))), None)


def unit_of(path):
    """One name for a header and the source that implements it."""
    return re.sub(r"^(API/|Platform/[^/]+/|Host/)?(Inc|Src)/(SonaroHost/)?", r"\1", os.path.splitext(path)[0])


def find_faults(root):
    rooms = Rooms()
    roots = include_roots(root)
    faults = []
    graph = {}
    paths = sorted(sources(root))
    for path in paths:
        room = rooms.find(path)
        if room is None:
            faults.append(f"{path}: stands in no room; enter its folder in {os.path.basename(__file__)}")
            continue
        units = graph.setdefault(unit_of(path), set())
        for number, text, target in includes(root, path, roots):
            if target is None:
                # Libraries of others come in quotes in a few places.
                if not os.path.exists(os.path.join("/usr/include", text)):
                    faults.append(f"{path}:{number}: nothing is found under {text}")
                continue
            target_room = rooms.find(target)
            if target_room not in rooms.uses[room]:
                faults.append(f"{path}:{number}: {room} does not use {target_room}: {text}")
            if unit_of(target) != unit_of(path):
                units.add(unit_of(target))
    return len(paths), faults + circles(graph)


def circles(graph):
    found = []
    state = {}

    def visit(unit, trail):
        state[unit] = "open"
        for target in sorted(graph.get(unit, ())):
            if state.get(target) == "open":
                found.append("circle: " + " -> ".join(trail[trail.index(target):] + [target]))
            elif target not in state:
                visit(target, trail + [target])
        state[unit] = "done"

    for unit in sorted(graph):
        if unit not in state:
            visit(unit, [unit])
    return found


def main(root):
    count, faults = find_faults(root)
    print("\n".join(faults) if faults else f"{count} files include downward only")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
