"""Renders the sound of timelines, exact to the sample: the engine and the command "sonaro" for Python."""
from ._convert import resample, stretch
from ._errors import (Cancelled, EngineError, Error, InputError, NothingHeardError, OutputError, SonaroWarning,
                      UsageError)
from ._measure import LoudnessSeries, Waveform, loudness, waveform
from ._render import render
from ._sonaro import Cancel, __version__
from ._timeline import Note, Timeline, TrackInfo, open  # pylint: disable=redefined-builtin

__all__ = ["Cancel", "Cancelled", "EngineError", "Error", "InputError", "LoudnessSeries", "Note", "NothingHeardError",
           "OutputError", "SonaroWarning", "Timeline", "TrackInfo", "UsageError", "Waveform", "__version__", "loudness",
           "open", "render", "resample", "stretch", "waveform"]
