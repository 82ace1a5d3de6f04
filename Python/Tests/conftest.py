"""What the tests share: the command, the examples, and timelines made by arithmetic."""
import json
import os
import pathlib
import subprocess

import pytest

from timelines import write_media


@pytest.fixture(scope="session")
def command():
    """Runs the command as another process; gives its exit code, and what it printed."""
    def run(*arguments):
        done = subprocess.run([os.environ["SONARO_COMMAND"], *map(str, arguments)], capture_output=True, text=True,
                              check=False)
        return done.returncode, done.stdout, done.stderr
    return run


@pytest.fixture(scope="session")
def examples():
    return pathlib.Path(os.environ["SONARO_EXAMPLES"])


@pytest.fixture(scope="session")
def edit(examples):
    return examples / "Timeline" / "edit.otio"


@pytest.fixture(scope="session")
def media(tmp_path_factory):
    """A folder with the media of random timelines."""
    folder = tmp_path_factory.mktemp("media")
    write_media(folder)
    return folder


class InMemory:
    """What an object of OpenTimelineIO offers."""

    def __init__(self, content):
        self.content = content

    def to_json_string(self):
        return self.content if isinstance(self.content, str) else json.dumps(self.content)


@pytest.fixture(scope="session")
def in_memory():
    return InMemory
