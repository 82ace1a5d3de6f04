#!/usr/bin/env python3
"""Runs the commands over a disk that fails: every kind of fault at every call, as far as time allows.

Usage: try-disk.py [MOST [NAME...]] [--program PROGRAM] [--kinds KIND,...]

MOST is how many calls of each command and kind are tried, 60 by default, 0 for all of them: those at the start and then
evenly spread ones. NAMEs choose commands. The disk is a file system of its own (FUSE; needs libfuse3-dev and the right
to mount, such as root's): Tests/Faults/FaultyFolder.cpp describes the kinds. Inputs, outputs and temporary files lie on
it. A run is good when it

- ends by itself with exit code 0, 1 or 3, by no signal and within a minute,
- gives the same output as on a whole disk where the code is 0, unless it says in a warning or its JSON what is missing,
- and otherwise says why in a line that names a file, and leaves what was at the place of the output before, or the
  whole output,
- leaves no temporary file, other than folders that the disk lets nobody read, and its inputs as they were,
- and does not take the failure of a write for a success.

Then it plays from the disk while a read hangs, which has to go on with silence that is reported, and serves from it.
Ends with a line of counts; the exit code says whether all runs were good.
"""
import argparse
import http.client
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), "Tests", "Faults"))
import faults  # noqa: E402

KINDS = ["eio", "broken", "enospc", "eintr", "short", "shrink", "vanish", "slow"]
# These change the inputs themselves.
CHANGING = ("shrink", "vanish")
WRITES = ("create", "write", "sync", "close", "rename", "resize", "mkdir")
OLD = b"what was there before\n"


class Disk:
    """A folder that is mounted, and what is behind it."""

    def __init__(self, folder, program):
        self.real = os.path.join(folder, "real")
        self.place = os.path.join(folder, "disk")
        for name in (self.real, self.place):
            os.makedirs(name)
        self.process = subprocess.Popen([program, self.real, self.place], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        for _ in range(100):
            if os.path.ismount(self.place):
                return
            time.sleep(0.05)
        raise SystemExit("the file system could not be mounted; this needs /dev/fuse and the right to mount")

    def order(self, line):
        self.process.stdin.write(line + "\n")
        self.process.stdin.flush()
        return self.process.stdout.readline().strip()

    def set(self, kind, number=0):
        self.order(f"set {kind} {number}")

    def report(self):
        """The number of calls, and the operation and the path of the one that failed."""
        words = self.order("report").split(" ", 2)
        return int(words[0]), *(words[1:] if len(words) == 3 else ("", ""))

    def close(self):
        self.process.stdin.close()
        try:
            self.process.wait(10)
        except subprocess.TimeoutExpired:
            self.process.kill()
        subprocess.run(["umount", "-l", self.place], check=False, stderr=subprocess.DEVNULL)


def lists_missing(output):
    """Whether a command has printed as JSON that media are missing, with the reasons."""
    try:
        printed = json.loads(output)
    except ValueError:
        return False
    return isinstance(printed, dict) and bool(printed.get("missing"))


class Trials:
    def __init__(self, disk, copy):
        self.disk = disk
        self.copy = copy
        self.counts = {"runs": 0, "faults": 0, "refused": 0, "warned": 0, "survived": 0, "bad": 0}
        self.inputs = faults.read_tree(os.path.join(copy, "in"))

    def clear(self, case, hasOld):
        for name in ("out", "tmp"):
            faults.clear(os.path.join(self.disk.real, name))
        for name in (case.outputs or []) if hasOld else []:
            with open(os.path.join(self.disk.real, "out", name), "wb") as file:
                file.write(OLD)

    def restore(self):
        shutil.rmtree(os.path.join(self.disk.real, "in"))
        shutil.copytree(os.path.join(self.copy, "in"), os.path.join(self.disk.real, "in"))

    def run(self, case, kind, number):
        self.clear(case, number % 2 == 1)
        before = faults.read_tree(os.path.join(self.disk.real, "out"))
        self.disk.set(kind, number)
        began = time.monotonic()
        code, output, text = faults.run(case.words, self.disk.place, {"TMPDIR": os.path.join(self.disk.place, "tmp")})
        count, operation, path = self.disk.report()
        self.disk.set("none")
        files = faults.read_tree(os.path.join(self.disk.real, "out"))
        return {"code": code, "output": b"" if case.is_timed else output, "text": text, "count": count,
                "operation": operation, "path": path, "before": before, "files": files,
                "left": faults.read_tree(os.path.join(self.disk.real, "tmp")), "seconds": time.monotonic() - began}

    def judge(self, result, whole, kind):
        code, text = result["code"], result["text"].strip()
        if code is None:
            return "does not end"
        if code not in (0, 1, 3):
            return f"ends with {code}"
        if (result["left"] or any(".sonaro-" in name for name in result["files"])):
            return "leaves temporary files: " + ", ".join(list(result["left"])[:3])
        if code == 0:
            isSame = result["files"] == whole["files"] and result["output"] == whole["output"]
            if not isSame and "warning" not in text and not lists_missing(result["output"]):
                return "loses something without a word"
            isLost = kind in ("eio", "broken", "enospc") and result["operation"] in WRITES and "/out/" in result["path"]
            return "takes a failed write for a success" if isLost and result["operation"] != "close" else ""
        if not re.search(r"^sonaro: .*\S", text, re.MULTILINE):
            return "says nothing"
        if not re.search(r"'[^']+'|standard output|memory", text):
            return "names no file"
        for name, digest in result["files"].items():
            if digest not in (result["before"].get(name), whole["files"].get(name)) and code == 1:
                return f"leaves a part of {name}"
        if any(name not in result["files"] for name in result["before"]):
            return "removes what was there before"
        return ""

    def try_case(self, case, kind, most):
        self.restore()
        whole = self.run(case, "none", 0)
        # The calls that the kind is about.
        count = self.run(case, kind, 10 ** 9)["count"]
        if whole["code"] != 0:
            raise SystemExit(f"{case.name}: ends with {whole['code']} on a whole disk: {whole['text']}")
        if kind == "slow":
            numbers = [1]
        else:
            numbers = faults.sample(count, most if most > 0 else count)
        bad = 0
        for number in numbers:
            result = self.run(case, kind, number)
            wrong = self.judge(result, whole, kind)
            if kind in CHANGING:
                self.restore()
            elif faults.read_tree(os.path.join(self.disk.real, "in")) != self.inputs:
                wrong = wrong or "changes an input"
                self.restore()
            self.counts["runs"] += 1
            self.counts["faults"] += bool(result["operation"])
            self.counts["refused"] += bool(result["operation"]) and result["code"] in (1, 3)
            self.counts["survived"] += bool(result["operation"]) and result["code"] == 0
            if wrong:
                bad += 1
                said = result["text"].strip().splitlines()
                print(f"{case.name}: {kind} at call {number}, {result['operation']} of {result['path']}: {wrong}"
                      + (f": {said[-1]}" if said else ""), flush=True)
        self.counts["bad"] += bad
        print(f"{case.name} ({kind}): {count} calls, {len(numbers)} tried, {bad} bad", flush=True)

    def note(self, wrong, what):
        self.counts["runs"] += 1
        self.counts["faults"] += 1
        self.counts["bad"] += bool(wrong)
        print(f"{what}: {wrong or 'good'}", flush=True)

    def try_hanging_play(self, number):
        """Playback goes on in time while a read hangs for two seconds, and counts what it missed."""
        self.restore()
        self.clear(faults.Case("play", []), False)
        self.disk.set("hang", number)
        process = subprocess.Popen(
            [faults.PROGRAM, "play", "in/Timeline/edit.otio", "--device", "null", "--no-ui", "--json"], cwd=self.disk.place,
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        began = time.monotonic()
        while not self.disk.report()[1] and process.poll() is None and time.monotonic() - began < 10:
            time.sleep(0.02)
        hasHung = bool(self.disk.report()[1])
        time.sleep(2.0)
        self.disk.set("none")
        try:
            output, text = process.communicate(timeout=40)
        except subprocess.TimeoutExpired:
            process.kill()
            process.communicate()
            self.note("does not end", f"play, read {number} hangs")
            return
        events = [json.loads(line) for line in output.splitlines() if line.startswith("{")]
        self.judge_play(number, hasHung, events, text, process.returncode)

    def judge_play(self, number, hasHung, events, text, code):
        last = json.dumps(events[-1]) if events else ""
        misses = max([event.get("misses", 0) or 0 for event in events] + [0])
        wrong = ""
        if code not in (0, 1, 3):
            wrong = f"ends with {code}: {text}"
        elif hasHung and code == 0 and misses == 0 and "unread" not in last and not text and len(events) > 3:
            # A read before the start delays that alone.
            wrong = "" if number <= self.startReads else f"reports nothing: {last}"
        self.note(wrong, f"play, read {number} hangs for 2 s: code {code}, {misses} misses")

    def try_serve(self, kind, number):
        """A server answers with the bytes of the file, with an error, or ends the connection; and then it goes on."""
        self.restore()
        self.disk.set("none")
        process = subprocess.Popen(
            [faults.PROGRAM, "serve", "in/Timeline/edit.otio", "--port", "0", "--json", "--cache", "tmp/cache"],
            cwd=self.disk.place, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        text = ""
        while not text.rstrip().endswith("}"):
            line = process.stdout.readline()
            if not line:
                break
            text += line
        port = json.loads(text)["port"]
        self.disk.set(kind, number)
        status, body = ask(port, "/mix.wav")
        self.disk.set("none")
        if kind in CHANGING:
            self.restore()
        # The watch looks every half second.
        for _ in range(40):
            again, after = ask(port, "/mix.wav")
            if again == 200 and after == self.mix:
                break
            time.sleep(0.25)
        process.terminate()
        wrong = ""
        try:
            process.communicate(timeout=20)
        except subprocess.TimeoutExpired:
            process.kill()
            wrong = "does not end"
        if status == 200 and body is not None and body != self.mix:
            wrong = "answers with other bytes"
        elif again != 200 or after != self.mix:
            wrong = f"does not recover: {again}"
        elif process.returncode != -15:
            wrong = wrong or f"ends with {process.returncode}"
        self.note(wrong, f"serve, {kind} at call {number}: {status}")

    def try_long_runs(self, names):
        if not names or "play" in names:
            self.disk.set("slow", 10 ** 9)
            self.startReads = 0
            faults.run(["info", "in/Timeline/edit.otio"], self.disk.place)
            self.startReads = self.disk.report()[0] + 8
            for number in (1, self.startReads + 4, self.startReads + 10):
                self.try_hanging_play(number)
        if not names or "serve" in names:
            faults.check(faults.run(["render", "in/Timeline/edit.otio", "-o", "out/mix.wav", "--quiet"], self.copy))
            with open(os.path.join(self.copy, "out", "mix.wav"), "rb") as file:
                self.mix = file.read()
            for kind in ("eio", "eintr", "short", "shrink", "vanish", "slow"):
                for number in (1, 5, 20):
                    self.try_serve(kind, number)


def ask(port, path):
    """The status and the content; no content where the connection ends before."""
    connection = http.client.HTTPConnection("127.0.0.1", port, timeout=30)
    try:
        connection.request("GET", path, headers={"Accept-Encoding": "identity"})
        answer = connection.getresponse()
        status = answer.status
        try:
            return status, answer.read()
        except (http.client.IncompleteRead, OSError):
            return status, None
    except (OSError, http.client.HTTPException):
        return 0, None
    finally:
        connection.close()


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("most", nargs="?", type=int, default=60)
    parser.add_argument("names", nargs="*")
    parser.add_argument("--program", default=faults.PROGRAM)
    parser.add_argument("--kinds", default=",".join(KINDS))
    options = parser.parse_args()
    faults.PROGRAM = os.path.abspath(options.program)
    if subprocess.run(["pkg-config", "--exists", "fuse3"], check=False).returncode or not os.path.exists("/dev/fuse"):
        raise SystemExit("disk: skipped; install libfuse3-dev and fuse3, and run where /dev/fuse is")
    folder = tempfile.mkdtemp(prefix="sonaro-disk-")
    program = os.path.join(folder, "faulty_folder")
    flags = subprocess.run(["pkg-config", "--cflags", "--libs", "fuse3"], check=True, capture_output=True, text=True).stdout.split()
    subprocess.run([os.environ.get("CXX", "c++"), "-std=c++20", "-O1", "-o", program,
                    os.path.join(faults.ROOT, "Tests", "Faults", "FaultyFolder.cpp"), *flags], check=True)
    disk = Disk(folder, program)
    try:
        copy = os.path.join(folder, "copy")
        os.makedirs(copy)
        faults.make_inputs(copy)
        for name in ("in", "out", "tmp"):
            shutil.copytree(os.path.join(copy, name), os.path.join(disk.real, name))
        trials = Trials(disk, copy)
        cases = [case for case in faults.list_cases(copy) if not options.names or case.name in options.names]
        for case in cases:
            for kind in options.kinds.split(","):
                trials.try_case(case, kind, options.most)
        trials.try_long_runs(options.names)
    finally:
        disk.close()
        shutil.rmtree(folder, ignore_errors=True)
    counts = trials.counts
    print(f"disk: {len(cases)} commands, {counts['runs']} runs, {counts['faults']} faults, {counts['refused']} refused or "
          f"reported, {counts['survived']} survived, {counts['bad']} bad")
    return 1 if counts["bad"] else 0


if __name__ == "__main__":
    sys.exit(main())
