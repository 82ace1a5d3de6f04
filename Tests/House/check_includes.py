#!/usr/bin/env python3
"""Proves that #include lines point downward only and form no circle.

Each folder has a floor; a file may include files of its own floor or of a lower one. On the floor of
nodes, files may include only their own folder. Usage: check_includes.py ROOT
"""
import os
import re
import sys

# From the ground up. A prefix further down the list may include any prefix before it.
FLOORS = [
    ["Platform/zorvcore/"],
    ["Platform/zorvmediatypes/"],
    ["Platform/zorvaccelerate/"],
    ["Platform/zorvaudiodsp/"],
    ["Platform/zorvaudiofilters/"],
    ["Platform/Vexilon/"],
    ["API/Inc/"],
    ["Inc/AudioRender/Core/", "Src/AudioRender/Core/"],
    ["Inc/Panner/Algorithm/", "Inc/Prefetch/", "Src/Prefetch/", "Inc/Waveform/", "Src/Waveform/",
     "Inc/Time/Resampler/", "Src/Time/Resampler/"],
    ["Inc/AudioRender/Source/", "Src/AudioRender/Source/"],
    ["Inc/AudioRender/Component/", "Src/AudioRender/Component/", "Inc/Panner/", "Src/Panner/"],
    ["Inc/AudioRender/Track/", "Src/AudioRender/Track/", "Inc/Time/", "Src/Time/"],
    ["Inc/AudioRender/Routing/", "Src/AudioRender/Routing/"],
    ["Src/AudioRender/"],
    ["Host/Inc/", "Host/Src/"],
    ["Host/"],
]
PREFIXES = sorted(
    ((prefix, floor) for floor, prefixes in enumerate(FLOORS) for prefix in prefixes),
    key=lambda entry: -len(entry[0]),
)
INCLUDE_ROOTS = ["API/Inc", "Inc", "Host/Inc", "Host/Src"]


def floor_of(path):
    return next((floor for prefix, floor in PREFIXES if path.startswith(prefix)), None)


def sources(root):
    for top in ("API", "Inc", "Src", "Platform", "Host"):
        for folder, _, names in os.walk(os.path.join(root, top)):
            for name in names:
                if name.endswith((".h", ".cpp")):
                    yield os.path.relpath(os.path.join(folder, name), root)


def main(root):
    include_roots = INCLUDE_ROOTS + [
        f"Platform/{name}/Inc" for name in sorted(os.listdir(os.path.join(root, "Platform")))
    ]
    faults = []
    graph = {}
    for path in sorted(sources(root)):
        floor = floor_of(path)
        if floor is None:
            faults.append(f"{path}: stands on no floor; enter its folder in {__file__}")
            continue
        graph[path] = []
        with open(os.path.join(root, path), encoding="utf-8") as text:
            for number, line in enumerate(text, 1):
                match = re.match(r'\s*#\s*include\s*"([^"]+)"', line)
                if not match:
                    continue
                beside = os.path.join(os.path.dirname(path), match[1])
                candidates = [beside] + [os.path.join(base, match[1]) for base in include_roots]
                target = next((c for c in candidates if os.path.exists(os.path.join(root, c))), None)
                if target is None:
                    faults.append(f"{path}:{number}: nothing is found under {match[1]}")
                    continue
                graph[path].append(target)
                target_floor = floor_of(target)
                if target_floor is not None and target_floor > floor:
                    faults.append(f"{path}:{number}: includes upward: {match[1]}")
    faults += circles(graph)
    print("\n".join(faults) if faults else f"{len(graph)} files include downward only")
    return 1 if faults else 0


def circles(graph):
    found = []
    state = {}

    def visit(path, trail):
        state[path] = "open"
        for target in graph.get(path, []):
            if state.get(target) == "open":
                found.append("circle: " + " -> ".join(trail[trail.index(target):] + [target]))
            elif target not in state:
                visit(target, trail + [target])
        state[path] = "done"

    for path in graph:
        if path not in state:
            visit(path, [path])
    return found


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
