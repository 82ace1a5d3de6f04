"""Renders the sound of timelines, exact to the sample: the engine and the command "sonaro" for Python."""
from ._convert import resample, stretch
from ._errors import (Cancelled, EngineError, Error, InputError, NothingHeardError, OutputError, SonaroWarning,
                      UsageError)
from ._measure import LoudnessSeries, Waveform, loudness, waveform
from ._render import render
from ._sequence import (Clip, Crossfade, Curve, Cut, Effect, Fade, Fader, Item, Media, Multicam, Nest, OpenSequence, Send,
                        Sequence, Submix, Track)
from ._sonaro import Cancel, __version__
from ._timeline import Note, Timeline, TrackInfo
from ._timeline import open as open  # pylint: disable=redefined-builtin,useless-import-alias

# Not "open", which would hide that of Python.
__all__ = ["Cancel", "Cancelled", "Clip", "Crossfade", "Curve", "Cut", "Effect", "EngineError", "Error", "Fade", "Fader",
           "InputError", "Item", "LoudnessSeries", "Media", "Multicam", "Nest", "Note", "NothingHeardError",
           "OpenSequence", "OutputError", "Send", "Sequence", "SonaroWarning", "Submix", "Timeline", "Track", "TrackInfo",
           "UsageError", "Waveform", "__version__", "loudness", "render", "resample", "stretch", "waveform"]
