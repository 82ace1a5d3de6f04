#!/usr/bin/env python3
"""Asks "sonaro serve" for random ranges, many clients at once, and compares them with the file that "sonaro render" writes.

Usage: try-serving.py [REQUESTS [CLIENTS]] [--program PROGRAM] [--seed SEED]
       try-serving.py --slow [--program PROGRAM]
       try-serving.py --first-byte [--hours HOURS] [--tracks TRACKS] [--program PROGRAM] [--seed SEED]

The timeline is made for it: levels that move, pans, transitions, nests at other speeds, reverse, stretched and pitched
clips, a ramp, a multicam, sends and, where plugins are installed, effects whose past can be settled. A second server
plays a reverb (an effect whose past cannot), with a warm-up that reaches the start. Ends with a line of counts: how many
answers differ, and the memory and the threads of the server after a tenth of the requests and after all.

--slow connects clients that write or read a byte a second, few of them and then as many as are served at once, and looks
after which times they are dropped, and how long others wait meanwhile. It takes a minute.

--first-byte measures how long the first byte of sound takes at random places of a long timeline of many tracks, which
takes 500 MB in TMPDIR: the times of a request of the page, from connecting on, in milliseconds.
"""
import argparse
import array
import http.client
import json
import os
import random
import signal
import socket
import struct
import subprocess
import sys
import tempfile
import threading
import time

RATE = 48000
REVERB = "http://drobilla.net/plugins/mda/Ambience"
GAIN = "http://lv2plug.in/plugins/eg-amp"


def write_wav(path, frames, channels, rate, seed):
    """Noise that is softer and louder, of 16 bits."""
    noise = array.array("h", random.Random(seed).randbytes(2 * channels * min(frames, 10 * rate)))
    noise = array.array("h", (sample // 8 for sample in noise))
    with open(path, "wb") as file:
        size = 2 * channels * frames
        file.write(b"RIFF" + struct.pack("<I", 36 + size) + b"WAVEfmt "
                   + struct.pack("<IHHIIHH", 16, 1, channels, rate, rate * 2 * channels, 2 * channels, 16)
                   + b"data" + struct.pack("<I", size))
        data = noise.tobytes()
        for first in range(0, size, len(data)):
            file.write(data[:size - first])


def moment(seconds):
    return {"OTIO_SCHEMA": "RationalTime.1", "value": seconds * 25, "rate": 25}


def stretch(start, seconds):
    return {"OTIO_SCHEMA": "TimeRange.1", "start_time": moment(start), "duration": moment(seconds)}


def clip(media, start, seconds, settings=None, effects=()):
    return {"OTIO_SCHEMA": "Clip.1", "name": os.path.splitext(media)[0], "source_range": stretch(start, seconds),
            "effects": list(effects), "metadata": {"sonaro": settings or {}},
            "media_reference": {"OTIO_SCHEMA": "ExternalReference.1", "target_url": media}}


def gap(seconds):
    return {"OTIO_SCHEMA": "Gap.1", "source_range": stretch(0, seconds)}


def track(name, children, settings=None, effects=()):
    return {"OTIO_SCHEMA": "Track.1", "name": name, "kind": "Audio", "children": list(children),
            "effects": list(effects), "metadata": {"sonaro": settings or {}}}


def stack(children, settings=None, effects=(), trim=None):
    return {"OTIO_SCHEMA": "Stack.1", "name": "nest", "children": list(children), "effects": list(effects),
            "metadata": {"sonaro": settings or {}}, **({"source_range": stretch(*trim)} if trim else {})}


def warp(factor):
    return {"OTIO_SCHEMA": "LinearTimeWarp.1", "name": "", "effect_name": "LinearTimeWarp", "time_scalar": factor}


def plugin(uri, controls):
    return {"OTIO_SCHEMA": "Effect.1", "effect_name": "LV2", "metadata": {"sonaro": {"lv2": {"uri": uri, "controls": controls}}}}


def fade(name):
    return {"OTIO_SCHEMA": "Transition.1", "name": name, "in_offset": moment(0.2), "out_offset": moment(0.2)}


def keys(values):
    return {"keyframes": [{"time": time, "value": value} for time, value in values]}


def write_timeline(folder, name, children, settings=None):
    path = os.path.join(folder, name)
    with open(path, "w", encoding="utf-8") as file:
        json.dump({"OTIO_SCHEMA": "Timeline.1", "name": name, "metadata": {"sonaro": settings or {}},
                   "tracks": {"OTIO_SCHEMA": "Stack.1", "children": children}}, file)
    return path


def make_varied_timeline(folder, last):
    """last: the effects of the last track."""
    write_wav(os.path.join(folder, "a.wav"), 40 * RATE, 2, RATE, 1)
    write_wav(os.path.join(folder, "b.wav"), 40 * 44100, 1, 44100, 2)
    write_wav(os.path.join(folder, "c.wav"), 40 * RATE, 1, RATE, 3)
    inner = stack([track("inner", [gap(0.4), clip("a.wav", 3, 4), fade("x"), clip("b.wav", 5, 6)])],
                  {"gain": keys([(0, -6), (4, 0)])}, [warp(1.5)], (0.12, 5))
    nest = stack([track("outer", [inner, clip("c.wav", 2, 3)], {"pan": 0.3})], trim=(0.2, 7))
    angles = stack([track("wide", [clip("a.wav", 1, 8)]), track("close", [clip("c.wav", 1, 8)])],
                   {"multicam": {"cuts": [{"time": 2.5, "angle": 2, "fade": 0.02}, {"time": 5, "angle": 1}]}})
    tracks = [
        track("levels", [clip("a.wav", 1, 10, {"gain": keys([(0, -3), (4, -200), (6, 0)])}), fade("x"),
                         clip("b.wav", 3, 12, {"fade_out": {"duration": 2}})], {"pan": keys([(0, -1), (9, 1)])}),
        track("nests", [gap(0.7), nest, gap(3), nest, clip("b.wav", 20, 6)]),
        track("warps", [clip("a.wav", 5, 6, effects=[warp(-1)]), clip("a.wav", 9, 5, {"keep_pitch": True}, [warp(1.25)]),
                        clip("c.wav", 2, 4, {"pitch": 3}), clip("b.wav", 4, 5, effects=[warp(-0.7)])]),
        track("ramp", [clip("c.wav", 1, 9, {"speed": keys([(0, 0.5), (8, 2)])}), clip("a.wav", 7, 6)]),
        track("cameras", [gap(1.3), angles, clip("c.wav", 12, 7)], {"sends": [{"to": "hall", "gain": -9}]}),
        track("effects", [clip("a.wav", 11, 20)], effects=last),
    ]
    return write_timeline(folder, "edit.otio", tracks, {"layout": "stereo", "submixes": [{"name": "hall", "gain": -6}]})


def make_long_timeline(folder, hours, tracks, seed):
    chance = random.Random(seed)
    media = []
    for number in range(8):
        media.append(f"take{number}.wav")
        write_wav(os.path.join(folder, media[-1]), 600 * RATE, 1, RATE, number)
    rows = []
    for number in range(tracks):
        children = []
        left = hours * 3600
        while left > 0:
            seconds = min(chance.randrange(25, 1500) / 25, left)
            children.append(clip(chance.choice(media), chance.randrange(0, 500), seconds, {"gain": -chance.randrange(12, 30)}))
            left -= seconds
        rows.append(track(f"track {number + 1}", children, {"gain": keys([(0, -6), (hours * 3600, 0)]), "pan": chance.uniform(-1, 1)}))
    return write_timeline(folder, "long.otio", rows, {"layout": "stereo"})


class Server:
    def __init__(self, program, timeline, folder, options=()):
        words = [program, "serve", timeline, "--port", "0", "--json", "--cache", os.path.join(folder, "cache"), *options]
        self.process = subprocess.Popen(words, stdout=subprocess.PIPE, text=True)
        text = ""
        while not text.endswith("}\n"):
            line = self.process.stdout.readline()
            if not line:
                sys.exit("the server does not start")
            text += line
        self.port = json.loads(text)["port"]

    def state(self):
        """Resident memory in kB, and threads."""
        with open(f"/proc/{self.process.pid}/status", encoding="utf-8") as file:
            fields = dict(line.split(":", 1) for line in file)
        return int(fields["VmRSS"].split()[0]), int(fields["Threads"])

    def connect(self):
        return http.client.HTTPConnection("127.0.0.1", self.port, timeout=60)

    def stop(self):
        self.process.send_signal(signal.SIGTERM)
        self.process.wait()


def get_part(connection, first, end):
    """The bytes of a range; waits when the server asks for it."""
    while True:
        connection.request("GET", "/mix.wav", headers={"Range": f"bytes={first}-{end - 1}"})
        answer = connection.getresponse()
        body = answer.read()
        if answer.status == 206:
            return body
        if answer.status != 503:
            sys.exit(f"status {answer.status}: {body[:200]}")
        time.sleep(1)


def ask(server, whole, requests, clients, seed):
    """Returns how many answers differ, and the state of the server after a tenth and after all."""
    lock = threading.Lock()
    counts = {"left": requests, "differ": 0}
    early = []

    def work(number):
        chance = random.Random(seed * 1000 + number)
        connection = server.connect()
        while True:
            with lock:
                if counts["left"] == 0:
                    return
                counts["left"] -= 1
                if counts["left"] == requests * 9 // 10:
                    early.append(server.state())
            first = chance.randrange(len(whole))
            end = min(first + chance.choice([1, 7, 4096, 65536, 300000]), len(whole))
            if get_part(connection, first, end) != whole[first:end]:
                with lock:
                    counts["differ"] += 1

    threads = [threading.Thread(target=work, args=(number,)) for number in range(clients)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    return counts["differ"], early[0] if early else server.state(), server.state()


def try_bytes(program, requests, clients, seed):
    with tempfile.TemporaryDirectory(prefix="sonaro-serving-") as folder:
        listed = subprocess.run([program, "effects"], capture_output=True, text=True, check=False).stdout
        effects = [plugin(GAIN, {"gain": -3})] if GAIN in listed else []
        cases = [("settled", effects, []), ("reverb", [plugin(REVERB, {})] if REVERB in listed else [], ["--warm-up", "60"])]
        wrong = 0
        for name, last, options in cases:
            if name == "reverb" and not last:
                print("reverb: skipped, since mda-lv2 is not installed")
                continue
            timeline = make_varied_timeline(folder, last)
            mix = os.path.join(folder, "mix.wav")
            subprocess.run([program, "render", timeline, "-o", mix, "--quiet"], check=True)
            with open(mix, "rb") as file:
                whole = file.read()
            server = Server(program, timeline, folder, options)
            begin = time.monotonic()
            # Each request of the reverb renders all that comes before it.
            count = requests if name == "settled" else min(requests, 100)
            differ, early, late = ask(server, whole, count, clients, seed)
            server.stop()
            wrong += differ
            print(f"{name}: {count} requests of {clients} clients for {len(whole)} bytes in {time.monotonic() - begin:.1f} s, "
                  f"{differ} differ; memory {early[0] // 1024} and {late[0] // 1024} MB, threads {early[1]} and {late[1]}")
        return 1 if wrong else 0


class SlowClient:
    """Sends a request, or a part of one, and then writes or reads a byte each time that it is asked to."""

    def __init__(self, server, request):
        self.socket = socket.socket()
        self.socket.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4096)
        self.socket.connect(("127.0.0.1", server.port))
        self.socket.settimeout(60)
        self.socket.sendall(request)
        self.begin = time.monotonic()
        self.isWriting = not request.endswith(b"\r\n\r\n")
        self.answer = b""
        self.seconds = None

    def step(self):
        """Notes when an answer to an unfinished request comes."""
        if not self.isWriting:
            self.answer += self.socket.recv(1)
        elif self.seconds is None:
            try:
                self.socket.send(b"x")
                self.answer += self.socket.recv(4096, socket.MSG_DONTWAIT)
            except BlockingIOError:
                return
            except OSError:
                pass
            self.seconds = time.monotonic() - self.begin

    def read_rest(self):
        try:
            while piece := self.socket.recv(65536):
                self.answer += piece
        except ConnectionResetError:
            pass
        return self.answer


def be_slow(clients, seconds, step=1.0):
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        for client in clients:
            client.step()
        time.sleep(step)


def try_slow_clients(program):
    most = 64
    asking, reading = b"GET /mix", b"GET /mix.wav HTTP/1.1\r\nHost: localhost\r\n\r\n"
    with tempfile.TemporaryDirectory(prefix="sonaro-serving-") as folder:
        timeline = make_varied_timeline(folder, [])
        mix = os.path.join(folder, "mix.wav")
        subprocess.run([program, "render", timeline, "-o", mix, "--quiet"], check=True)
        length = os.path.getsize(mix)
        server = Server(program, timeline, folder)
        writers = [SlowClient(server, asking) for _ in range(4)]
        readers = [SlowClient(server, reading) for _ in range(4)]
        be_slow(writers + readers, 30)
        late = sum(1 for client in writers if not client.answer.startswith(b"HTTP/1.1 408") or client.seconds > 13)
        whole = sum(1 for client in readers if len(client.read_rest()) >= length)
        crowd = [SlowClient(server, request) for request in (asking, reading) for _ in range(most // 2)]
        slow = threading.Thread(target=be_slow, args=(crowd, 8, 0.1))
        slow.start()
        time.sleep(0.5)
        begin = time.monotonic()
        refused = sum(1 for _ in range(20) if len(get_part(server.connect(), 0, 1000)) != 1000)
        waited = time.monotonic() - begin
        slow.join()
        memory, threads = server.state()
        server.stop()
        seconds = max(client.seconds or 0 for client in writers)
        print(f"slow clients: {late} of 4 unfinished requests without 408 in time ({seconds:.1f} s), {whole} of 4 readers got all of "
              f"{length} bytes; beside {most}, 20 requests took {waited:.1f} s, {refused} were refused; memory {memory // 1024} MB, "
              f"threads {threads}")
        return 1 if late or whole or refused or waited > 8 else 0


def time_first_bytes(server, length, count, chance):
    """Milliseconds from connecting on, sorted."""
    times = []
    for _ in range(count):
        at = 4096 + chance.randrange((length - 1000000) // 8) * 8
        begin = time.monotonic()
        connection = server.connect()
        connection.request("GET", "/mix.wav", headers={"Range": f"bytes={at}-{at + RATE // 4 * 8 - 1}"})
        answer = connection.getresponse()
        body = answer.read(1)
        times.append(1000 * (time.monotonic() - begin))
        if not any(body + answer.read()):
            sys.exit(f"there is no sound at byte {at}")
        connection.close()
    return sorted(times)


def describe_times(times):
    return f"median {times[len(times) // 2]:.0f} ms, 95 % {times[len(times) * 95 // 100]:.0f} ms, longest {times[-1]:.0f} ms"


def measure_first_byte(program, hours, tracks, seed):
    with tempfile.TemporaryDirectory(prefix="sonaro-serving-") as folder:
        timeline = make_long_timeline(folder, hours, tracks, seed)
        begin = time.monotonic()
        server = Server(program, timeline, folder)
        opened = time.monotonic() - begin
        connection = server.connect()
        connection.request("GET", "/mix.wav", headers={"Range": "bytes=0-4095"})
        answer = connection.getresponse()
        length = int(answer.headers["Content-Range"].split("/")[1])
        answer.read()
        first_answer = time.monotonic() - begin - opened
        chance = random.Random(seed)
        time_first_bytes(server, length, 10, chance)
        idle = time_first_bytes(server, length, 50, chance)
        # A page asks for these at once, and the server goes on with them for minutes.
        others = [server.connect() for _ in range(2)]
        for other, path in zip(others, ["/loudness.json", "/peaks/1/1024.dat"]):
            other.request("GET", path)
        busy = time_first_bytes(server, length, 50, chance)
        memory, threads = server.state()
        server.stop()
        print(f"{tracks} tracks of {hours} hours: open after {opened:.1f} s, first answer after {first_answer:.1f} s; first byte at "
              f"{len(idle)} random places: {describe_times(idle)}; while loudness and peaks are computed: {describe_times(busy)}; "
              f"memory {memory // 1024} MB, threads {threads}, load {os.getloadavg()[0]:.1f}")
        return 0


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("requests", nargs="?", type=int, default=10000)
    parser.add_argument("clients", nargs="?", type=int, default=16)
    parser.add_argument("--slow", action="store_true")
    parser.add_argument("--first-byte", action="store_true")
    parser.add_argument("--hours", type=float, default=2)
    parser.add_argument("--tracks", type=int, default=64)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--program", default=os.path.join(here, "..", "build", "release", "Host", "sonaro"))
    words = parser.parse_args()
    if words.first_byte:
        return measure_first_byte(words.program, words.hours, words.tracks, words.seed)
    if words.slow:
        return try_slow_clients(words.program)
    return try_bytes(words.program, words.requests, words.clients, words.seed)


sys.exit(main())
