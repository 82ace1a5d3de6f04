"""What threads, processes and the garbage collector do to what was opened."""
import gc
import multiprocessing
import os
import subprocess
import sys
import weakref

import numpy
import sonaro
from sonaro import Clip, Item, Media, Sequence, Track


class Player:
    """Holds a sequence that calls it."""

    def __init__(self):
        media = Media(self.play, 48000, channels=1, frames=48000)
        self.opened = Sequence([Track([Item(Clip(media), 0, 1)])]).open()

    @staticmethod
    def make(frames):
        return numpy.ones((1, frames), dtype=numpy.float32)

    def play(self, _, frames):
        return self.make(frames)


def test_circles_through_opened_sequences_are_collected():
    player = Player()
    assert player.opened.read(0, 10).all()
    player = weakref.ref(player)
    gc.collect()
    assert player() is None


def read_in_child(answers, opened):
    try:
        answers.put(opened.read(0, 10).shape)
    except sonaro.UsageError as error:
        answers.put(str(error))


def test_a_forked_process_opens_its_own(edit):
    context = multiprocessing.get_context("fork")
    answers = context.Queue()
    with sonaro.open(edit) as opened:
        child = context.Process(target=read_in_child, args=(answers, opened))
        child.start()
        assert "was opened by another process" in answers.get(timeout=60)
        child.join()
        assert opened.read(0, 10).shape == (2, 10)


LEAVING = """
import sys, threading, time
import sonaro
started = threading.Event()
def render():
    sonaro.render(sys.argv[1], "mix.wav", progress=lambda *_: started.set(), normalize=-16)
def read():
    with sonaro.open(sys.argv[1]) as opened:
        while True:
            started.set()
            opened.read(0, opened.frames)
threading.Thread(target={"render": render, "read": read}[sys.argv[2]], daemon=True).start()
started.wait()
"""


def test_leaving_the_interpreter_ends_the_calls_of_threads(edit, tmp_path):
    for what in ("render", "read"):
        done = subprocess.run([sys.executable, "-c", LEAVING, edit, what], cwd=tmp_path, capture_output=True, text=True,
                              check=False, timeout=60)
        assert done.returncode == 0, done.stderr
        assert set(os.listdir(tmp_path)) <= {"mix.wav"}
