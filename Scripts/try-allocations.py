#!/usr/bin/env python3
"""Lets every allocation of the program fail once: all commands over all examples, one run for each allocation.

Usage: try-allocations.py [MOST [NAME...]] [--program PROGRAM] [--keep]

MOST is how many allocations of each command and kind are tried, 500 by default, 0 for all of them: those at the start
and then evenly spread ones. NAMEs choose commands. An allocation by operator new fails in one run, and one of any kind in
another; libraries that end the process when there is no memory are passed over. Where a library lets nothing be thrown,
the program says that there is no memory and ends at once; such places are listed, and so are libraries that leave blocks.
A run is good when it

- ends by itself with exit code 0, 1 or 3, by no signal,
- gives the same output as without a failure, where the code is 0,
- and otherwise says why in a line, writes no output, or the whole one, and leaves no temporary file,
- leaves no blocks behind that a run without a failure does not leave, and its inputs as they were.

Ends with a line of counts; the exit code says whether all runs were good.
"""
import argparse
import collections
import os
import re
import shutil
import subprocess
import sys
import tempfile

sys.path.insert(0, os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), "Tests", "Faults"))
import faults  # noqa: E402


LIBRARY = "liballocationfaults.so"
# Functions of libraries that leave memory when an allocation in them fails, by patterns of their names, with the reasons.
LEAVING = {
    r"nlohmann::.*::basic_json\(std::initializer_list":
        "nlohmann-json: the constructor from a braced list has made the object before it throws, and nobody destroys it",
}


def read_live(path):
    """The frames of each block that was never freed, by the innermost one that is not of the library."""
    blocks = collections.defaultdict(list)
    frames = []
    for line in open(path, encoding="utf-8") if os.path.exists(path) else []:
        frame = line.split("[")[0].strip()
        if frame and LIBRARY not in frame:
            frames.append(frame)
        elif not frame:
            blocks[frames[0] if frames else ""].append(frames)
            frames = []
    return blocks


class Trials:
    def __init__(self, folder, library):
        self.folder = folder
        self.library = library
        self.counts = {"runs": 0, "failed": 0, "passed over": 0, "survived": 0, "at once": 0, "left by libraries": 0, "bad": 0}
        self.ended = {}
        self.leaving = {}
        self.begin = {}
        self.inputs = faults.read_tree(os.path.join(folder, "in"))

    def run(self, case, kind, number):
        log, live = (os.path.join(self.folder, name) for name in ("log", "live"))
        for path in (log, live):
            if os.path.exists(path):
                os.remove(path)
        for name in ("out", "tmp"):
            faults.clear(os.path.join(self.folder, name))
        code, output, text = faults.run(case.words, self.folder, {
            "LD_PRELOAD": self.library, "SONARO_FAIL_AT": str(number), "SONARO_FAIL_KIND": kind, "SONARO_FAIL_LOG": log,
            "SONARO_LIVE_LOG": live, "TMPDIR": os.path.join(self.folder, "tmp")})
        lines = open(log, encoding="utf-8").read().splitlines() if os.path.exists(log) else []
        crash = lines.index("crashed") if "crashed" in lines else len(lines)
        count, blocks, state = lines[0].split(" ", 2) if crash > 0 else (0, 0, "unknown")
        return {"code": code, "output": b"" if case.is_timed else output, "text": text, "count": int(count),
                "blocks": int(blocks), "state": state, "place": lines[1:crash], "crash": lines[crash + 1:], "live": read_live(live),
                "files": faults.read_tree(os.path.join(self.folder, "out")),
                "left": faults.read_tree(os.path.join(self.folder, "tmp"))}

    def judge(self, result, whole):
        """What is wrong with a run; empty where nothing is."""
        code = result["code"]
        if code is None:
            return "does not end"
        if code not in (0, 1, 3):
            return f"ends with {code}"
        if result["left"] or any(".sonaro-" in name for name in result["files"]):
            return "leaves temporary files"
        # Media for which a library has no memory are silent, which is reported.
        isReported = code in (0, 3) and "warning" in result["text"]
        if any(whole["files"].get(name) != digest for name, digest in result["files"].items()) and not isReported:
            return "writes another output"
        left = self.list_leaks(result, whole)
        if left:
            return f"leaves {len(left)} blocks"
        if code == 0:
            isSame = result["files"] == whole["files"] and result["output"] == whole["output"]
            return "" if isSame or result["text"].strip() else "loses output without a word"
        if not re.match(r"sonaro: \S", result["text"].splitlines()[-1] if result["text"].strip() else ""):
            return "says nothing"
        return ""

    def list_leaks(self, result, whole):
        """The frames of the blocks that a run left, and that one without a failure does not leave."""
        return [frames for place, blocks in result["live"].items() for frames in blocks[len(whole["live"].get(place, [])):]]

    def describe(self, place):
        """Names of the program's functions in a list of frames."""
        names = []
        for frame in place:
            path, _, address = frame.partition("(")
            offset = re.search(r"\+(0x[0-9a-f]+)\)", frame)
            if offset and not os.path.basename(path).startswith(("libc.", "liballocation")):
                named = subprocess.run(["addr2line", "-Cfpe", path, offset[1]], capture_output=True, text=True, check=False)
                names.append(named.stdout.strip())
        return names

    def find_leaving(self, result, whole):
        """The reason why a library has left all that a run left; empty where it has not."""
        place = self.describe(result["place"])
        for pattern, reason in LEAVING.items():
            inside = [i for i, name in enumerate(place) if re.search(pattern, name)]
            # What called the library has made the parts of what is left.
            caller = place[inside[-1] + 1] if inside and inside[-1] + 1 < len(place) else None
            if caller and all(caller in self.describe(frames) for frames in self.list_leaks(result, whole)):
                return reason
        return ""

    def try_case(self, case, kind, most):
        whole = self.run(case, kind, 0)
        # Threads that serve the whole process may end before it or not.
        for other in (self.run(case, kind, 0) for _ in range(4)):
            for place, blocks in other["live"].items():
                whole["live"][place] = max(whole["live"][place], blocks, key=len)
        if whole["code"] != 0:
            raise SystemExit(f"{case.name}: ends with {whole['code']} without a failure: {whole['text']}")
        # What all commands begin with is tried once.
        begin = self.begin.get(kind, 0)
        numbers = [begin + i for i in faults.sample(whole["count"] - begin, most if most > 0 else whole["count"])]
        self.begin.setdefault(kind, self.run(faults.Case("begin", ["info", "none"]), kind, 0)["count"])
        bad = 0
        for number in numbers:
            result = self.run(case, kind, number)
            wrong = self.judge(result, whole)
            for _ in range(3):
                if wrong.startswith("leaves") and wrong.endswith("blocks"):
                    result = self.run(case, kind, number)
                    wrong = self.judge(result, whole)
            reason = self.find_leaving(result, whole) if wrong.startswith("leaves") and wrong.endswith("blocks") else ""
            if reason:
                self.counts["left by libraries"] += 1
                self.leaving.setdefault(reason, f"allocation {number} of {case.name}, {kind}")
                wrong = ""
            self.counts["runs"] += 1
            self.counts["failed"] += result["state"] == "failed"
            self.counts["passed over"] += result["state"] == "passed over"
            self.counts["survived"] += result["state"] == "failed" and result["code"] == 0
            if result["blocks"] < 0 and not wrong:
                self.counts["at once"] += 1
                names = self.describe(result["place"])
                own = [name for name in names if not re.match(r"(\S+ )?(std::|operator |__gnu_cxx::)", name)]
                self.ended.setdefault((own or names or ["unknown"])[0], number)
            if wrong:
                bad += 1
                said = result["text"].strip().splitlines()
                print(f"{case.name}: allocation {number} ({kind}): {wrong}: {said[-1] if said else ''}", flush=True)
                for line in self.describe(result["place"]):
                    print("    " + line[:160])
                for line in self.describe(result["crash"]):
                    print("  crashed in " + line[:160])
                for frames in self.list_leaks(result, whole)[:3] if "blocks" in wrong else []:
                    print("  left, from")
                    for line in self.describe(frames):
                        print("    " + line[:160])
        if faults.read_tree(os.path.join(self.folder, "in")) != self.inputs:
            print(f"{case.name}: an input has changed")
            bad += 1
        self.counts["bad"] += bad
        print(f"{case.name} ({kind}): {whole['count']} allocations, {len(numbers)} tried, {bad} bad", flush=True)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("most", nargs="?", type=int, default=500)
    parser.add_argument("names", nargs="*")
    parser.add_argument("--program", default=faults.PROGRAM)
    parser.add_argument("--kinds", default="new,all")
    parser.add_argument("--keep", action="store_true")
    options = parser.parse_args()
    faults.PROGRAM = os.path.abspath(options.program)
    folder = tempfile.mkdtemp(prefix="sonaro-allocations-")
    try:
        library = os.path.join(folder, LIBRARY)
        subprocess.run([os.environ.get("CXX", "c++"), "-std=c++20", "-O1", "-fPIC", "-shared", "-o", library,
                        os.path.join(faults.ROOT, "Tests", "Faults", "AllocationFaults.cpp"), "-ldl",
                        # It counts what is left after all other libraries have ended.
                        "-Wl,-z,initfirst"], check=True)
        faults.make_inputs(folder)
        trials = Trials(folder, library)
        cases = [case for case in faults.list_cases(folder) if not options.names or case.name in options.names]
        for case in cases:
            for kind in options.kinds.split(","):
                trials.try_case(case, kind, options.most)
    finally:
        if not options.keep:
            shutil.rmtree(folder, ignore_errors=True)
    counts = trials.counts
    for place, number in sorted(trials.ended.items()):
        print(f"ended at once: {place[:160]} (allocation {number})")
    for reason, example in sorted(trials.leaving.items()):
        print(f"left by a library: {reason} ({example})")
    print(f"allocations: {len(cases)} commands, {counts['runs']} runs, {counts['failed']} allocations failed "
          f"({counts['survived']} without harm, {counts['at once']} ended at once), {counts['passed over']} of libraries passed over, "
          f"{counts['left by libraries']} left blocks of libraries, {counts['bad']} bad")
    return 1 if counts["bad"] else 0


if __name__ == "__main__":
    sys.exit(main())
