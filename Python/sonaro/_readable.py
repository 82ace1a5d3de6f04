"""What is read as an array that is rendered where it is read."""
import os

from ._errors import Error, UsageError
from ._exit import CALLS
from ._values import show, whole


class Readable:
    """Something that was opened: a timeline or a sequence. Close it, or use it in a with statement, to free its media.

    name      what it is called
    rate      samples a second
    frames    samples of each channel
    duration  the same in seconds
    layout    the channels: "mono", "stereo", "5.1", "ambisonic1" ...
    channels  their number

    Threads: any; as many read at once as open was asked for. Processes: the one that opened it; another one, forked
    from it, opens its own.
    """

    # What the outermost tracks are called, in their order.
    _track_names = ()

    def __init__(self, opened, name, rate, frames, layout):
        self._opened = opened
        self._process = os.getpid()
        self.name = name
        self.rate = rate
        self.frames = frames
        self.duration = frames / rate
        self.layout = layout
        self.channels = opened.channels

    def read(self, start, frames, track=None):
        """The samples from start on as an array of float32 of the shape (channels, frames), those of the file that
        render writes: any place in any order gives the same bits. Outside of the programme is silence.

        start, frames: in samples of the rate, counted from the first one of the programme.
        track: the name or number of an outermost track that is heard alone, through the mix; None for all. Raises an
        Error, and a UsageError for a track that does not exist.
        """
        start = whole(start, "read: start", -2**52, 2**52)
        frames = whole(frames, "read: frames", 0, 2**40)
        opened = self._get()
        number = 0 if track is None else self._number(track)
        try:
            with CALLS:
                return opened.read(start, frames, number)
        except Error:
            self._raise_failure(opened)
            raise

    def blocks(self, size, track=None):
        """All samples in arrays of so many frames, as read gives them; the last one may be shorter."""
        size = whole(size, "blocks: size", 1, 2**40)
        return (self.read(start, min(size, self.frames - start), track) for start in range(0, self.frames, size))

    def close(self):
        """Frees media and memory; nothing can be read any more."""
        self._opened = None

    def _number(self, track):
        if isinstance(track, str):
            numbers = [number for number, name in enumerate(self._track_names, 1) if name == track]
            if len(numbers) != 1:
                raise UsageError(f"{len(numbers) or 'no'} tracks are called {track!r}; use a number from 1 to "
                                 f"{len(self._track_names)}")
            return numbers[0]
        number = getattr(track, "number", track)
        try:
            return whole(number, "track", 1, len(self._track_names))
        except UsageError:
            raise UsageError(f"there is no track {show(number)}; there are {len(self._track_names)}") from None

    def _get(self):
        if self._opened is None:
            raise UsageError(f"{self.name!r} was closed; open it again")
        if self._process != os.getpid():
            raise UsageError(f"{self.name!r} was opened by another process, which reads its media; open it in this one")
        return self._opened

    def _raise_failure(self, opened):
        """Raises what code of Python has raised, where that ended a read."""

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def __repr__(self):
        return (f"<sonaro.{type(self).__name__} {self.name!r}: {self.duration:g} s of {self.layout} at "
                f"{self.rate} Hz>")
