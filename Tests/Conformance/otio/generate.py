#!/usr/bin/env python3
"""Writes the conformance set for the sound of OpenTimelineIO files.

  generate.py           writes media/ and cases/ beside this script
  generate.py --check   fails when what is there differs from what would be written

Each case is a timeline and an expectation that is worked out here by hand, not by any reader of the format, so
that the set serves any program that renders such files. README.md tells how an expectation is read.
"""

import json
import math
import pathlib
import struct
import sys
from fractions import Fraction

HERE = pathlib.Path(__file__).resolve().parent
RATE = 48000

# ---------------------------------------------------------------------------------------------------------
# Media. Every sample tells where it comes from: channel c of a file holds first + 5000 * c + index, as 16 bits.

MEDIA = {
    # name: (sample rate, channels, frames, first value)
    "a.wav": (48000, 1, 4800, 1),
    "b.wav": (48000, 1, 4800, 10001),
    "stereo.wav": (48000, 2, 4800, 20001),
    "a44.wav": (44100, 1, 4410, 1),
    "three.wav": (48000, 3, 480, 1),
    "with space.wav": (48000, 1, 480, 30001),
}
CHANNEL_STEP = 5000


def wave_file(name):
    rate, channels, frames, first = MEDIA[name]
    data = b"".join(
        struct.pack("<h", first + CHANNEL_STEP * c + k) for k in range(frames) for c in range(channels))
    head = struct.pack("<4sI4s4sIHHIIHH4sI", b"RIFF", 36 + len(data), b"WAVE", b"fmt ", 16, 1, channels, rate,
                       rate * channels * 2, channels * 2, 16, b"data", len(data))
    return head + data


# ---------------------------------------------------------------------------------------------------------
# Timelines.

def t(value, rate=RATE):
    return {"OTIO_SCHEMA": "RationalTime.1", "value": value, "rate": rate}


def r(start, duration, rate=RATE):
    return {"OTIO_SCHEMA": "TimeRange.1", "start_time": t(start, rate), "duration": t(duration, rate)}


def ref(name, available=None):
    reference = {"OTIO_SCHEMA": "ExternalReference.1", "target_url": "../media/" + name}
    if available:
        reference["available_range"] = available
    return reference


def item(schema, fields, sonaro=None, **more):
    result = {"OTIO_SCHEMA": schema, **fields, **more}
    if sonaro:
        result["metadata"] = {"sonaro": sonaro}
    return result


def clip(media, source=None, available=None, sonaro=None, name="clip", **more):
    reference = media if isinstance(media, dict) else ref(media, available)
    fields = {"name": name, "media_reference": reference}
    if source:
        fields["source_range"] = source
    return item("Clip.1", fields, sonaro, **more)


def gap(duration, rate=RATE):
    return item("Gap.1", {"source_range": r(0, duration, rate)})


def transition(before, after, rate=RATE, sonaro=None, **more):
    return item("Transition.1", {"transition_type": "SMPTE_Dissolve", "in_offset": t(before, rate),
                                 "out_offset": t(after, rate)}, sonaro, **more)


def track(*children, kind="Audio", sonaro=None, **more):
    return item("Track.1", {"kind": kind, "children": list(children)}, sonaro, **more)


def stack(*children, sonaro=None, **more):
    return item("Stack.1", {"children": list(children)}, sonaro, **more)


def warp(factor, **more):
    return item("LinearTimeWarp.1", {"time_scalar": factor}, **more)


def timeline(*tracks, **stack_fields):
    return item("Timeline.1", {"tracks": stack(*tracks, **stack_fields)})


# ---------------------------------------------------------------------------------------------------------
# Expectations.

def run(start, end, media, first, channel=0, step=1, gain=1, fade=None, ramp=None, bend=0):
    """Output samples start to end hear media samples first, first + step ... times gain, and times the
    fade: [shape, "in" or "out", output sample at which it begins, output sample at which it is over], and times the
    ramp: ["decibels" or "linear", output sample at which it begins, output sample at which it is over, value there,
    value here]. With bend, sample n of the output hears media sample first + step * n + bend * n^2."""
    result = {"from": start, "to": end, "media": media, "channel": channel, "first": first, "step": step,
              "gain": gain}
    if fade:
        result["fade"] = fade
    if ramp:
        result["ramp"] = ramp
    if bend:
        result["bend"] = bend
    return result


def fading(way, start, end, media, first, shape="equal-power", **more):
    """A run that comes "in" or goes "out" over all its length."""
    return run(start, end, media, first, fade=[shape, way, start, end], **more)


def near(seconds):
    """The nearest sample, halves up."""
    return math.floor(Fraction(seconds) * RATE + Fraction(1, 2))


def length_is_open(made):
    """Whether an item plays at a speed other than 1, so that programs differ on which length its source_range has."""
    if isinstance(made, list):
        return any(map(length_is_open, made))
    if not isinstance(made, dict):
        return False
    speed = math.prod(effect.get("time_scalar", 1) for effect in made.get("effects", []) if effect.get("enabled", True))
    return abs(speed) not in (0, 1) or any(map(length_is_open, made.values()))


CASES = {}


def case(name, why, made, frames, channels, **more):
    assert name not in CASES
    if length_is_open(made) or more.get("unread"):
        more["warns"] = True
    CASES[name] = (made, {"why": why, "rate": RATE, "frames": frames, "channels": channels, **more})


def cuts(name, why, children, frames, runs, **more):
    """A case of one track, heard on one channel."""
    case(name, why, timeline(track(*children)), frames, [runs], **more)


FILM = Fraction(1001, 24000)  # a frame at 23.976, 2002 samples
VIDEO = Fraction(1001, 30000)  # a frame at 29.97, 1601.6 samples


def cut_cases():
    cuts("whole-file", "A clip without any range plays its whole file, which is a guess.",
         [clip("a.wav")], 4800, [run(0, 4800, "a.wav", 0)], warns=True)
    cuts("source-range", "source_range takes its part of the file, which begins at time 0.",
         [clip("a.wav", r(1000, 2000))], 2000, [run(0, 2000, "a.wav", 1000)])
    cuts("available-range", "Where the media begin at a timecode, file sample 0 is there: the hour plus one frame of "
         "24 is file sample 2000.",
         [clip("a.wav", r(86401, 1, 24), r(86400, 2.4, 24))], 2000, [run(0, 2000, "a.wav", 2000)])
    cuts("available-range-alone", "Without source_range the available_range is what is used, not the file.",
         [clip("a.wav", None, r(86400, 1, 24))], 2000, [run(0, 2000, "a.wav", 0)])
    cuts("before-the-media", "What is asked for before the start of the media is silence; it is reported.",
         [clip("a.wav", r(47000, 4000), r(50000, 4800))], 4000, [run(3000, 4000, "a.wav", 0)], warns=True)
    cuts("before-the-media-in-part", "The media begin 1 sample of 24000 late, which is 2 of 48000.",
         [clip("a.wav", r(0, 1000, 24000), r(1, 2400, 24000))], 2000, [run(2, 2000, "a.wav", 0)])
    cuts("beyond-the-media", "What is asked for beyond the end of the media is silence; it is reported.",
         [clip("a.wav", r(4000, 4000))], 4000, [run(0, 800, "a.wav", 4000)], warns=True)
    cuts("behind-each-other", "Children of a track lie one behind the other.",
         [clip("a.wav", r(0, 1000)), clip("b.wav", r(500, 700))], 1700,
         [run(0, 1000, "a.wav", 0), run(1000, 1700, "b.wav", 500)])
    cuts("gap", "A gap takes its time in silence.",
         [clip("a.wav", r(0, 1000)), gap(300), clip("b.wav", r(0, 700))], 2000,
         [run(0, 1000, "a.wav", 0), run(1300, 2000, "b.wav", 0)])
    case("tracks-sum", "Audio tracks sum; each begins at 0, and the longest one is the length.",
         timeline(track(clip("a.wav", r(0, 1000))), track(gap(500), clip("b.wav", r(0, 1500)))), 2000,
         [[run(0, 1000, "a.wav", 0), run(500, 2000, "b.wav", 0)]])
    case("video-track", "A track of pictures is not heard, though its file has sound; it counts for the length.",
         timeline(track(clip("b.wav", r(0, 3000)), kind="Video"), track(clip("a.wav", r(0, 1000)))), 3000,
         [[run(0, 1000, "a.wav", 0)]])
    case("track-source-range", "A track's source_range cuts it in its own time: 500 before the second clip.",
         timeline(track(clip("a.wav", r(0, 1000)), clip("b.wav", r(0, 1000)), source_range=r(500, 1000))), 1000,
         [[run(0, 500, "a.wav", 500), run(500, 1000, "b.wav", 0)]])
    case("stack-source-range", "The outermost stack's source_range cuts all tracks.",
         timeline(track(clip("a.wav", r(0, 2000))), track(clip("b.wav", r(0, 2000))), source_range=r(300, 900)), 900,
         [[run(0, 900, "a.wav", 300), run(0, 900, "b.wav", 300)]])
    case("range-before-the-start", "A source_range that begins before a composition begins is silent there.",
         timeline(track(clip("a.wav", r(0, 2000)), source_range=r(-300, 900))), 900, [[run(300, 900, "a.wav", 0)]])
    case("clip-in-a-stack", "A clip that stands in a stack by itself begins with it.",
         timeline(clip("a.wav", r(10, 500)), track(clip("b.wav", r(0, 900)))), 900,
         [[run(0, 500, "a.wav", 10), run(0, 900, "b.wav", 0)]])


def nesting_cases():
    inner = stack(track(clip("a.wav", r(0, 1000)), clip("b.wav", r(0, 1000))), source_range=r(600, 800))
    cuts("nested-stack", "A stack in a track is cut by its own source_range and stands where the track is.",
         [clip("b.wav", r(2000, 100)), inner], 900,
         [run(0, 100, "b.wav", 2000), run(100, 500, "a.wav", 600), run(500, 900, "b.wav", 0)])
    cuts("nested-track", "A track in a track likewise.",
         [gap(50), track(clip("a.wav", r(0, 400)), gap(100), clip("b.wav", r(0, 400)))], 950,
         [run(50, 450, "a.wav", 0), run(550, 950, "b.wav", 0)])
    case("stack-in-stack", "A stack in a stack begins with it.",
         timeline(stack(track(clip("a.wav", r(0, 400)))), track(clip("b.wav", r(0, 600)))), 600,
         [[run(0, 400, "a.wav", 0), run(0, 600, "b.wav", 0)]])
    cuts("nested-video", "A nested track that is not of kind Audio is silent and takes its time.",
         [track(clip("b.wav", r(0, 400)), kind="Video"), clip("a.wav", r(0, 400))], 800, [run(400, 800, "a.wav", 0)])
    deep = track(clip("a.wav", r(0, 4000)), source_range=r(100, 3000))
    deep = stack(deep, source_range=r(200, 2500))
    deep = track(deep, source_range=r(300, 2000))
    case("ranges-at-every-level", "Each level cuts in its own time: 100 + 200 + 300 + 400 samples in front.",
         timeline(deep, source_range=r(400, 1000)), 1000, [[run(0, 1000, "a.wav", 1000)]])
    cuts("used-twice", "Two nested stacks that are alike are heard at both places.",
         [inner, inner], 1600, [run(0, 400, "a.wav", 600), run(400, 800, "b.wav", 0), run(800, 1200, "a.wav", 600),
         run(1200, 1600, "b.wav", 0)])
    case("empty-compositions", "Empty tracks and stacks take no time and give no sound.",
         timeline(track(), stack(), track(track(), stack(), clip("a.wav", r(0, 100)))), 100,
         [[run(0, 100, "a.wav", 0)]])


def rounding_cases():
    b = [near(k * VIDEO) for k in range(4)]
    assert b == [0, 1602, 3203, 4805]
    cuts("through-cuts", "Three frames of 29.97 cut from a file without a break are the file without a break: 1601.6 "
         "samples each, whose boundaries are rounded once, to 0, 1602, 3203, 4805.",
         [*[clip("a.wav", r(k, 1, 29.97)) for k in range(3)]], 4805, [run(0, 4800, "a.wav", 0)])
    case("boundaries-round-once", "The same places with another file at each second one: no gap, no overlap.",
         timeline(track(clip("a.wav", r(0, 1, 29.97)), clip("b.wav", r(0, 1, 29.97)),
                        clip("a.wav", r(0, 1, 29.97)))), 4805,
         # The boundary at 3203 is 3203.2 rounded, so b's sample at 1602 is 0.4 of its own, which is 0;
         # and a's at 3203 is -0.2, which is 0 too.
         [[run(0, 1602, "a.wav", 0), run(1602, 3203, "b.wav", 0), run(3203, 4805, "a.wav", 0)]])
    cuts("nested-boundaries-round-once", "Within nested items the same absolute boundaries come out: 1601.6 twice is "
         "3203.2, not twice 1602.",
         [gap(1, 29.97), stack(track(clip("a.wav", r(0, 1, 29.97)), clip("b.wav", r(0, 1, 29.97))))], 4805,
         [run(1602, 3203, "a.wav", 0), run(3203, 4805, "b.wav", 0)])
    cuts("film-rate", "23.976 stands for 24000/1001: two frames are 4004 samples.",
         [clip("a.wav", r(0, 2, 23.976)), clip("b.wav", r(0, 100))], 4104,
         [run(0, 4004, "a.wav", 0), run(4004, 4104, "b.wav", 0)])
    assert near(2 * FILM) == 4004
    cuts("mixed-rates", "A start of 1/25 s and a duration of 1/30 s: samples 1920 to 3520.",
         [clip("a.wav", {"OTIO_SCHEMA": "TimeRange.1", "start_time": t(1, 25), "duration": t(1, 30)})], 1600,
         [run(0, 1600, "a.wav", 1920)])
    cuts("small-cuts", "Clips of a 44100th of a second do not drift, nor does a gap of 800: all of it ends at 1000 * "
         "48000 / 44100 = 1088.4 samples.",
         [*[clip("a.wav", r(k, 1, 44100)) for k in range(200)], gap(800, 44100), clip("b.wav", r(0, 100))], 1188,
         [run(0, near(Fraction(200, 44100)), "a.wav", 0), run(1088, 1188, "b.wav", 0)])


def transition_cases():
    pair = lambda middle: timeline(track(clip("a.wav", r(0, 2000)), middle, clip("b.wav", r(1000, 2000))))

    def crossed(shape, before=400, after=400):
        fade = [2000 - before, 2000 + after]
        return [[run(0, 2000 - before, "a.wav", 0),
                 run(*fade, "a.wav", fade[0], fade=[shape, "out", *fade]),
                 run(*fade, "b.wav", 1000 - before, fade=[shape, "in", *fade]),
                 run(2000 + after, 4000, "b.wav", 1000 + after)]]

    case("transition", "A transition is a crossfade over what both clips have beyond the cut; equal power.",
         pair(transition(400, 400)), 4000, crossed("equal-power"))
    case("transition-linear", "The shape of a render's choice.",
         pair(transition(400, 400)), 4000, crossed("linear"), fades="linear")
    case("transition-s-curve", "The transition's own shape goes before the render's.",
         pair(transition(400, 400, sonaro={"curve": "s-curve"})), 4000, crossed("s-curve"), fades="linear")
    case("transition-lopsided", "in_offset lies before the cut, out_offset behind it.",
         pair(transition(100, 700)), 4000, crossed("equal-power", 100, 700))
    case("transition-before-the-cut", "With an out_offset of 0 it ends at the cut.",
         pair(transition(600, 0)), 4000, crossed("equal-power", 600, 0))
    case("transition-disabled", "A transition that is not enabled is a plain cut.",
         pair(transition(400, 400, enabled=False)), 4000, [[run(0, 2000, "a.wav", 0), run(2000, 4000, "b.wav", 1000)]])
    cuts("missing-handle", "b begins at the cut, so there is silence in its place before; it is reported.",
         [clip("a.wav", r(0, 2000)), transition(400, 0), clip("b.wav", r(0, 2000))], 4000,
         [run(0, 1600, "a.wav", 0), fading("out", 1600, 2000, "a.wav", 1600), run(2000, 4000, "b.wav", 0)], warns=True)
    cuts("fade-from-gap", "From a gap, the clip fades in within its own time, over the out_offset.",
         [gap(500), transition(0, 400), clip("a.wav", r(1000, 2000))], 2500,
         [fading("in", 500, 900, "a.wav", 1000), run(900, 2500, "a.wav", 1400)])
    cuts("fade-to-gap", "To a gap, it fades out over the in_offset; the gap's part is silent, and reported.",
         [clip("a.wav", r(0, 2000)), transition(400, 100), gap(500)], 2500,
         [run(0, 1600, "a.wav", 0), fading("out", 1600, 2000, "a.wav", 1600)], warns=True)
    cuts("fade-at-the-ends", "At the ends of a track as next to gaps.",
         [transition(0, 300), clip("a.wav", r(0, 2000)), transition(500, 0)], 2000,
         [fading("in", 0, 300, "a.wav", 0), run(300, 1500, "a.wav", 300), fading("out", 1500, 2000, "a.wav", 1500)])
    cuts("transitions-in-a-row", "Two transitions on one clip, which meet within it.",
         [clip("a.wav", r(0, 1000)), transition(200, 500), clip("b.wav", r(1000, 1000)), transition(500, 200),
         clip("a.wav", r(3000, 1000))], 3000,
         [run(0, 800, "a.wav", 0), fading("out", 800, 1500, "a.wav", 800), fading("in", 800, 1500, "b.wav", 800),
         fading("out", 1500, 2200, "b.wav", 1500), fading("in", 1500, 2200, "a.wav", 2500),
         run(2200, 3000, "a.wav", 3200)])
    cuts("transition-too-long", "One that is longer than a clip is made shorter; it is reported.",
         [clip("a.wav", r(1000, 300)), transition(400, 400), clip("b.wav", r(1000, 2000))], 2300,
         [fading("out", 0, 700, "a.wav", 1000), fading("in", 0, 700, "b.wav", 700), run(700, 2300, "b.wav", 1400)],
         warns=True)
    case("transition-of-nested", "The content of a nested stack reaches beyond its source_range.",
         timeline(track(stack(track(clip("a.wav", r(0, 3000))), source_range=r(0, 2000)), transition(400, 400),
         clip("b.wav", r(1000, 2000)))), 4000, crossed("equal-power"))
    cuts("transition-to-disabled", "A clip that is silent is crossfaded as silence.",
         [clip("a.wav", r(0, 2000)), transition(400, 400), clip("b.wav", r(1000, 2000), enabled=False)], 4000,
         [run(0, 1600, "a.wav", 0), fading("out", 1600, 2400, "a.wav", 1600)])


def enabled_cases():
    cuts("clip-disabled", "A clip that is not enabled is silent and takes its time.",
         [clip("a.wav", r(0, 500), enabled=False), clip("b.wav", r(0, 500))], 1000, [run(500, 1000, "b.wav", 0)])
    case("track-disabled", "A track that is not enabled is left out.",
         timeline(track(clip("a.wav", r(0, 500)), enabled=False), track(clip("b.wav", r(0, 500)))), 500,
         [[run(0, 500, "b.wav", 0)]])
    cuts("nested-disabled", "A nested stack that is not enabled is silent and takes its time.",
         [stack(track(clip("a.wav", r(0, 500))), enabled=False), clip("b.wav", r(0, 500))], 1000,
         [run(500, 1000, "b.wav", 0)])
    cuts("effect-disabled", "An effect that is not enabled has none.",
         [clip("a.wav", r(0, 500), effects=[warp(-1, enabled=False)])], 500, [run(0, 500, "a.wav", 0)])


def speed_cases():
    cuts("backwards", "At -1 the length stays, and the last sample of the range is heard first.",
         [clip("a.wav", r(1000, 500), effects=[warp(-1)])], 500, [run(0, 500, "a.wav", 1499, step=-1)])
    cuts("warps-multiply", "Several warps multiply: 4, 1/2 and -1/2 are -1.",
         [clip("a.wav", r(1000, 500), effects=[warp(4), warp(0.5), warp(-0.5)])], 500,
         [run(0, 500, "a.wav", 1499, step=-1)])
    cuts("twice-as-fast", "At 2 the length stays, and twice as much of the media passes, from the start of the range "
         "on.",
         [clip("a.wav", r(100, 2000), effects=[warp(2)])], 2000, [run(0, 2000, "a.wav", 100, step=2)], within=0.2,
         unsettled=40)
    ramp = {"speed": {"keyframes": [{"time": 0, "value": 0.5}, {"time": 2000 / RATE, "value": 1.5}]}}
    cuts("speed-ramp", "Along a speed that rises from 1/2 to 3/2, the media stand at its integral.",
         [clip("a.wav", r(100, 2000), sonaro=ramp)], 2000, [run(0, 2000, "a.wav", 100, step=0.5, bend=1 / 4000)],
         within=0.2, unsettled=40)
    there = {"speed": {"keyframes": [{"time": 0, "value": 1}, {"time": 2000 / RATE, "value": -1}]}}
    cuts("speed-through-zero", "A speed that falls from 1 to -1 plays up to a quarter of the length, and back again.",
         [clip("a.wav", r(1000, 2000), sonaro=there)], 2000, [run(0, 2000, "a.wav", 1000, bend=-1 / 2000)],
         within=0.2, unsettled=40)
    cuts("half-as-fast", "At 1/2 half as much passes.",
         [clip("a.wav", r(1000, 2000), effects=[warp(0.5)])], 2000, [run(0, 2000, "a.wav", 1000, step=0.5)],
         within=0.2, unsettled=40)
    cuts("twice-as-fast-backwards", "At -2 what is heard at 2 comes the other way round: from 500 + 2 * 2000 back to "
         "500, the last sample first.",
         [clip("a.wav", r(500, 2000), effects=[warp(-2)])], 2000, [run(0, 2000, "a.wav", 4499, step=-2)], within=0.2,
         unsettled=40)
    cuts("half-as-fast-backwards", "At -1/2 from 1000 + 2000 / 2 back to 1000; the end of the range is not reached.",
         [clip("a.wav", r(1000, 2000), effects=[warp(-0.5)])], 2000, [run(0, 2000, "a.wav", 1999, step=-0.5)],
         within=0.2, unsettled=40)
    cuts("backwards-beyond-the-media", "At -2 from 3000 + 2 * 1000 on, of which the first 200 are beyond the file's "
         "4800: 100 samples of silence.",
         [clip("a.wav", r(3000, 1000), effects=[warp(-2)])], 1000, [run(100, 1000, "a.wav", 4799, step=-2)],
         within=0.2, unsettled=100)
    cuts("warps-multiply-backwards", "-1/2 and 4 are -2, and the range is worked out from their product.",
         [clip("a.wav", r(500, 2000), effects=[warp(-0.5), warp(4)])], 2000, [run(0, 2000, "a.wav", 4499, step=-2)],
         within=0.2, unsettled=40)
    cuts("freeze-frame", "A freeze frame is silent and takes its time.",
         [clip("a.wav", r(0, 500), effects=[item("FreezeFrame.1", {"time_scalar": 0})]), clip("b.wav", r(0, 500))],
         1000, [run(500, 1000, "b.wav", 0)])
    nested = stack(track(clip("a.wav", r(0, 600)), clip("b.wav", r(0, 600))), source_range=r(100, 1000))
    cuts("nested-backwards", "A nested stack at -1 is the whole of it backwards, from the end of its range.",
         [gap(50), {**nested, "effects": [warp(-1)]}], 1050,
         [run(50, 550, "b.wav", 499, step=-1), run(550, 1050, "a.wav", 599, step=-1)])
    case("track-backwards", "A track at -1 likewise.",
         timeline(track(clip("a.wav", r(0, 600)), clip("b.wav", r(0, 600)), effects=[warp(-1)])), 1200,
         [[run(0, 600, "b.wav", 599, step=-1), run(600, 1200, "a.wav", 599, step=-1)]])
    case("timeline-backwards", "The outermost stack likewise.",
         timeline(track(clip("a.wav", r(0, 600))), track(clip("b.wav", r(0, 600))), effects=[warp(-1)]), 600,
         [[run(0, 600, "a.wav", 599, step=-1), run(0, 600, "b.wav", 599, step=-1)]])
    cuts("backwards-in-backwards", "A clip at -1 within a stack at -1 runs forward.",
         [stack(track(clip("a.wav", r(100, 600), effects=[warp(-1)])), effects=[warp(-1)])], 600,
         [run(0, 600, "a.wav", 100)])
    cuts("nested-twice-as-fast", "A nested stack at 2: its second 1000 samples are passed too.",
         [stack(track(clip("a.wav", r(0, 4000))), source_range=r(500, 1000), effects=[warp(2)])], 1000,
         [run(0, 1000, "a.wav", 500, step=2)], within=0.2, unsettled=40)
    between = stack(track(clip("a.wav", r(0, 4000))), source_range=r(3001, 2400, 3 * RATE))
    cuts("nested-between-samples", "A nested stack at 3/4 from 1000 1/3 on begins there, although the media within have "
         "its rate.", [{**between, "effects": [warp(0.75)]}], 800,
         [run(0, 800, "a.wav", 1000 + 1 / 3, step=0.75)], within=0.1, unsettled=40)
    cuts("nested-between-samples-backwards", "At -3/4 it begins a sample before its end, at 1000 1/3 + 800 * 3/4 - 1.",
         [{**between, "effects": [warp(-0.75)]}], 800, [run(0, 800, "a.wav", 1599 + 1 / 3, step=-0.75)], within=0.1,
         unsettled=40)
    long = stack(track(gap(100), clip("a.wav", r(1000, 3000))), source_range=r(500, 800))
    cuts("nested-twice-as-fast-backwards", "A nested stack at -2: its time 500 + 2 * 800 back to 500, which is the "
         "clip's 2000 back to 400 and the media's 3000 back to 1400.",
         [{**long, "effects": [warp(-2)]}], 800, [run(0, 800, "a.wav", 2999, step=-2)], within=0.2, unsettled=40)
    slow = stack(track(clip("a.wav", r(1000, 3000), effects=[warp(-0.5)])), source_range=r(500, 800))
    cuts("half-backwards-within-double", "A clip at -1/2 goes from 1000 + 3000 / 2 back to 1000; the nest at 2 begins "
         "500 into that, at 2250, and passes by 2 * -1/2.",
         [{**slow, "effects": [warp(2)]}], 800, [run(0, 800, "a.wav", 2249, step=-1)], within=0.3, unsettled=40)
    case("half-backwards-within-double-backwards", "The nest at -2 begins at 500 + 2 * 800, where the clip is at 2500 - "
         "2100 / 2, and goes forward.",
         timeline(track({**slow, "effects": [warp(-2)]})), 800,
         # The last sample of the nest is heard first, its 2099th; the clip's resampler, run backwards, is a sample
         # or two beside its place.
         [[run(0, 800, "a.wav", 1449.5, step=1)]], within=2, unsettled=40)
    cuts("transitions-half-backwards", "At -1/2 the clip is at 2000 where it begins and at 1500 where it ends. Before "
         "its start it borrows above, 100 samples for 200; behind its end below, 150 for 300.",
         [clip("b.wav", r(0, 1000)), transition(200, 0), clip("a.wav", r(1500, 1000), effects=[warp(-0.5)]),
         transition(0, 300), clip("b.wav", r(1000, 1000))], 3000,
         [run(0, 800, "b.wav", 0), fading("out", 800, 1000, "b.wav", 800),
         fading("in", 800, 1000, "a.wav", 2099, step=-0.5), run(1000, 2000, "a.wav", 1999, step=-0.5),
         fading("out", 2000, 2300, "a.wav", 1499, step=-0.5), fading("in", 2000, 2300, "b.wav", 1000),
         run(2300, 3000, "b.wav", 1300)], within=0.2, unsettled=40)
    cuts("transition-backwards", "What is read backwards goes on below its range after its end: a goes on below its "
         "sample 1000.",
         [clip("a.wav", r(1000, 1000), effects=[warp(-1)]), transition(200, 300), clip("b.wav", r(1000, 1000))], 2000,
         [run(0, 800, "a.wav", 1999, step=-1), fading("out", 800, 1300, "a.wav", 1199, step=-1),
         fading("in", 800, 1300, "b.wav", 800), run(1300, 2000, "b.wav", 1300)])
    cuts("other-sample-rate", "A file of 44.1 kHz in a programme of 48 kHz: 0.91875 of its samples for one.",
         [clip("b.wav", r(0, 1)), clip("b.wav", r(1, 1)), clip("a44.wav", r(441, 2205, 44100))], 2402,
         [run(0, 2, "b.wav", 0), run(2, 2402, "a44.wav", 441, step=0.91875)], within=0.2, unsettled=40)


def media_cases():
    missing = {"OTIO_SCHEMA": "ExternalReference.1", "target_url": "../media/none.wav"}
    cuts("missing-file", "A file that is not there is silence that takes its time; it is reported.",
         [clip(missing, r(0, 500), name="lost"), clip("b.wav", r(0, 500))], 1000, [run(500, 1000, "b.wav", 0)],
         missing=["lost"], warns=True)
    cuts("missing-reference", "So is a clip with a MissingReference.",
         [clip({"OTIO_SCHEMA": "MissingReference.1"}, r(0, 500), name="lost"), clip("b.wav", r(0, 500))], 1000,
         [run(500, 1000, "b.wav", 0)], missing=["lost"], warns=True)
    cuts("outside-the-media", "A clip of which nothing lies within its media is missing: its timecode is an hour, "
         "that of the file 0.",
         [clip("a.wav", r(3600, 0.01, 1), name="hour"), clip("b.wav", r(0, 500))], 980, [run(480, 980, "b.wav", 0)],
         missing=["hour"], warns=True)
    cuts("generator", "What a generator would make is silent, and nothing is missing.",
         [clip({"OTIO_SCHEMA": "GeneratorReference.1", "generator_kind": "tone"}, r(0, 500)),
         clip("b.wav", r(0, 500))], 1000, [run(500, 1000, "b.wav", 0)])
    two = {"OTIO_SCHEMA": "Clip.2", "name": "clip", "source_range": r(0, 500),
           "media_references": {"low": ref("a.wav"), "high": ref("b.wav")},
           "active_media_reference_key": "high"}
    cuts("active-reference", "Of several references the active one counts.", [two], 500, [run(0, 500, "b.wav", 0)])
    cuts("encoded-url", "A relative URL counts from the file's folder and is percent-encoded.",
         [clip(ref("with%20space.wav"), r(0, 400))], 400, [run(0, 400, "with space.wav", 0)])
    cuts("plain-path", "A plain path is taken as it is.",
         [clip(ref("with space.wav"), r(0, 400))], 400, [run(0, 400, "with space.wav", 0)])


def mix_cases():
    cuts("clip-gain", "-20 dB are a tenth.",
         [clip("a.wav", r(0, 500), sonaro={"gain": -20})], 500, [run(0, 500, "a.wav", 0, gain=0.1)])
    case("gains-at-every-level", "Gains of clip, nested stack, track and timeline multiply: -20 + 40 - 20 - 20 dB.",
         timeline(track(stack(track(clip("a.wav", r(0, 500), sonaro={"gain": -20})), sonaro={"gain": 40}),
         sonaro={"gain": -20}), sonaro={"gain": -20}), 500, [[run(0, 500, "a.wav", 0, gain=0.1)]])
    case("gain-keyframes", "Keyframes count from the start of the clip; held ones jump.",
         timeline(track(gap(640), clip("a.wav", r(100, 2000), sonaro={"gain": {"keyframes": [
             {"time": t(0), "value": 0, "interpolation": "hold"},
             {"time": t(640), "value": -20}]}}))), 2640,
         [[run(640, 1280, "a.wav", 100), run(1280, 2640, "a.wav", 740, gain=0.1)]],
         # A jump of a gain may be rounded off against clicks, from its place on.
         skipped=[[1280, 1280 + RATE // 100]])
    cuts("foreign-gain", "A gain that another program left in an effect multiplies.",
         [clip("a.wav", r(0, 500), sonaro={"gain": -20},
         effects=[ {"OTIO_SCHEMA": "Effect.1", "name": "level", "effect_name": "Volume",
         "metadata": {"parameters": {"gain": 0.5}}}])], 500, [run(0, 500, "a.wav", 0, gain=0.05)], warns=True)
    cuts("clip-mute", "A muted clip is silent and takes its time.",
         [clip("a.wav", r(0, 500), sonaro={"mute": True}), clip("b.wav", r(0, 500))], 1000,
         [run(500, 1000, "b.wav", 0)])
    case("track-mute", "A muted track is left out.",
         timeline(track(clip("a.wav", r(0, 500)), sonaro={"mute": True}), track(clip("b.wav", r(0, 500)))), 500,
         [[run(0, 500, "b.wav", 0)]])
    case("solo", "Of the children of a stack those that are solo are heard.",
         timeline(track(clip("a.wav", r(0, 500))), track(clip("b.wav", r(0, 500)), sonaro={"solo": True})), 500,
         [[run(0, 500, "b.wav", 0)]])
    case("solo-within", "A solo counts among its siblings alone.",
         timeline(track(clip("a.wav", r(0, 500))),
         stack(track(clip("b.wav", r(0, 500)), sonaro={"solo": True}), track(clip("b.wav", r(1000, 500))))), 500,
         [[run(0, 500, "a.wav", 0), run(0, 500, "b.wav", 0)]])
    cuts("channels", "\"channels\" counts from 1: the second channel alone.",
         [clip("stereo.wav", r(0, 500), sonaro={"channels": [2]})], 500, [run(0, 500, "stereo.wav", 0, channel=1)])
    case("channels-swapped", "Two of them, the other way round.",
         timeline(track(clip("stereo.wav", r(0, 500), sonaro={"channels": [2, 1]}))), 500,
         [[run(0, 500, "stereo.wav", 0, channel=1)], [run(0, 500, "stereo.wav", 0)]])
    cuts("fades", "fade_in and fade_out of a clip, each with its curve.",
         [clip("a.wav", r(0, 2000), sonaro={ "fade_in": {"duration": 0.01, "curve": "linear"},
         "fade_out": {"duration": t(240), "curve": "s-curve"}})], 2000,
         [fading("in", 0, 480, "a.wav", 0, shape="linear"), run(480, 1760, "a.wav", 480),
         fading("out", 1760, 2000, "a.wav", 1760, shape="s-curve")])
    case("fades-of-tracks", "Tracks and the timeline itself have fades too.",
         timeline(track(clip("a.wav", r(0, 2000)), sonaro={"fade_in": {"duration": t(480), "curve": "linear"}}),
         sonaro={"fade_out": {"duration": t(480), "curve": "linear"}}), 2000,
         [[fading("in", 0, 480, "a.wav", 0, shape="linear"), run(480, 1520, "a.wav", 480),
         fading("out", 1520, 2000, "a.wav", 1520, shape="linear")]])
    submixes = [{"name": "room", "gain": -20}]
    case("output", "A track that goes to a submix is heard through it alone.",
         timeline(track(clip("a.wav", r(0, 500)), sonaro={"output": "room"}), track(clip("b.wav", r(0, 500))),
         sonaro={"submixes": submixes}), 500, [[run(0, 500, "a.wav", 0, gain=0.1), run(0, 500, "b.wav", 0)]])
    case("send", "A send goes behind the fader: 1/10 straight, and 1/10 * 1/10 * 1/10 through the submix.",
         timeline(track(clip("a.wav", r(0, 500)), sonaro={"gain": -20, "sends": [ {"to": "room", "gain": -20}]}),
         sonaro={"submixes": submixes}), 500, [[run(0, 500, "a.wav", 0, gain=0.101)]])
    case("send-before-the-fader", "Before the fader: the track's gain does not count.",
         timeline(track(clip("a.wav", r(0, 500)),
         sonaro={"gain": -20, "sends": [ {"to": "room", "gain": -20, "pre_fader": True}]}),
         sonaro={"submixes": submixes}), 500, [[run(0, 500, "a.wav", 0, gain=0.11)]])
    case("submix-mute", "A muted submix is silent; what else the track goes to is not.",
         timeline(track(clip("a.wav", r(0, 500)), sonaro={"sends": [{"to": "room", "gain": 0}]}),
         sonaro={"submixes": [{"name": "room", "mute": True}]}), 500, [[run(0, 500, "a.wav", 0)]])


def angles(*children, cuts=(), sonaro=None, stack_range=None, effects=(), **settings):
    """A multicam stack; a cut is (sample, angle), from the start of its source_range."""
    fields = {"source_range": stack_range} if stack_range else {}
    multicam = {"cuts": [{"time": t(sample), "angle": angle} for sample, angle in cuts], **settings}
    return stack(*children, sonaro={"multicam": multicam, **(sonaro or {})}, effects=list(effects), **fields)


def multicam_cases():
    first = track(clip("a.wav", r(0, 1500)), name="Wide")
    second = track(clip("b.wav", r(0, 1500)), name="Close")
    cuts("multicam", "A stack with cuts plays one of its tracks at a time, the first one before the first cut. Times count "
         "from the start of its source_range, angles from 1 or by name; cuts may be in any order.",
         [gap(50), angles(first, second, cuts=[(900, "Wide"), (500, 2)], stack_range=r(100, 1000))], 1050,
         [run(50, 550, "a.wav", 100), run(550, 950, "b.wav", 600), run(950, 1050, "a.wav", 1000)])
    made = timeline(first, second)
    made["tracks"]["children"].insert(0, track(clip("stereo.wav", r(0, 1500)), kind="Video"))
    made["tracks"]["metadata"] = {"sonaro": {"multicam": {"angle": "Close", "cuts": [{"time": t(400), "angle": 1}]}}}
    case("multicam-timeline", "The outermost stack has angles, too; tracks of pictures are none. \"angle\" is heard "
         "before the first cut.", made, 1500, [[run(0, 400, "b.wav", 0), run(400, 1500, "a.wav", 400)]])
    case("multicam-fade", "With a fade, the angle before goes out from the cut on while the new one comes in; a cut can have "
         "a fade of its own.",
         timeline(track(angles(first, second, cuts=[(500, 2)], fade=t(100), curve="linear"))), 1500,
         [[run(0, 500, "a.wav", 0), fading("out", 500, 600, "a.wav", 500, shape="linear"),
           fading("in", 500, 600, "b.wav", 500, shape="linear"), run(600, 1500, "b.wav", 600)]])
    cuts("multicam-fade-too-long", "A fade ends at the next cut; that it is shortened is reported.",
         [angles(first, second, cuts=[(500, 2), (550, 1)], fade=t(100), curve="linear")], 1500,
         [run(0, 500, "a.wav", 0), fading("out", 500, 550, "a.wav", 500, shape="linear"),
          fading("in", 500, 550, "b.wav", 500, shape="linear"), fading("out", 550, 650, "b.wav", 550, shape="linear"),
          fading("in", 550, 650, "a.wav", 550, shape="linear"), run(650, 1500, "a.wav", 650)], warns=True)
    cuts("multicam-backwards", "A time warp applies to the whole, cuts included: they stand in the time of the content.",
         [angles(first, second, cuts=[(300, 2)], stack_range=r(0, 1000), effects=[warp(-1)])], 1000,
         [run(0, 700, "b.wav", 999, step=-1), run(700, 1000, "a.wav", 299, step=-1)])
    cuts("multicam-twice-as-fast", "At 2 the cut is heard after half its time.",
         [angles(first, second, cuts=[(600, 2)], stack_range=r(0, 700), effects=[warp(2)])], 700,
         [run(0, 300, "a.wav", 0, step=2), run(300, 700, "b.wav", 600, step=2)], within=4, unsettled=100)
    cuts("multicam-missing", "An angle whose media are missing is silent while it is heard; it is reported.",
         [angles(first, track(clip("gone.wav", r(0, 1500), name="lost")), cuts=[(500, 2), (900, 1)])], 1500,
         [run(0, 500, "a.wav", 0), run(900, 1500, "a.wav", 900)], missing=["lost"], warns=True)
    cuts("multicam-no-angles", "A multicam stack without angles is silent, like any stack without audio.",
         [{**angles(cuts=[(100, 2)]), "source_range": r(0, 500)}, clip("a.wav", r(0, 500))], 1000,
         [run(500, 1000, "a.wav", 0)])
    case("multicam-layouts", "Angles have the layout of the widest one: a mono angle is on both sides.",
         timeline(track(angles(first, track(clip("stereo.wav", r(0, 1500))), cuts=[(500, 2)]))), 1500,
         [[run(0, 500, "a.wav", 0), run(500, 1500, "stereo.wav", 500)],
          [run(0, 500, "a.wav", 0), run(500, 1500, "stereo.wav", 500, channel=1)]])
    sending = track(clip("b.wav", r(0, 1500)), sonaro={"sends": [{"to": "room", "gain": 0}]})
    cuts("multicam-submixes", "Each angle has the submixes to itself; the levels of the stack are those of the whole.",
         [angles(first, sending, cuts=[(500, 2)], sonaro={"submixes": [{"name": "room", "gain": -20}], "gain": -20})],
         1500, [run(0, 500, "a.wav", 0, gain=0.1), run(500, 1500, "b.wav", 500, gain=0.11)])
    cuts("multicam-transitions", "Transitions within angles stay where they are, cut off where the angle is not heard; the "
         "stack itself has transitions, under which cuts before its start count.",
         [clip("b.wav", r(2000, 1000)), transition(100, 100, sonaro={"curve": "linear"}),
          angles(track(clip("a.wav", r(0, 700)), transition(100, 100, sonaro={"curve": "linear"}),
                       clip("a.wav", r(3000, 800))), second, cuts=[(-50, 1), (500, 2)], angle=2,
                 stack_range=r(200, 800))], 1800,
         [run(0, 900, "b.wav", 2000), fading("out", 900, 1100, "b.wav", 2900, shape="linear"),
          run(900, 950, "b.wav", 100, fade=["linear", "in", 900, 1100]),
          run(950, 1100, "a.wav", 150, fade=["linear", "in", 900, 1100]), run(1100, 1400, "a.wav", 300),
          run(1400, 1500, "a.wav", 600, fade=["linear", "out", 1400, 1600]),
          run(1400, 1500, "a.wav", 2900, fade=["linear", "in", 1400, 1600]), run(1500, 1800, "b.wav", 700)])


def denoise_cases():
    def denoise(**settings):
        return item("Effect.1", {"effect_name": "sonaro:denoise"}, sonaro={"denoise": settings})
    cuts("denoise-by-nothing", "A reduction of 0 dB leaves every sample as it is.",
         [clip("a.wav", r(0, 500), effects=[denoise(reduction=0)]), clip("a.wav", r(500, 500))], 1000,
         [run(0, 1000, "a.wav", 0)])
    cuts("denoise-outside", "Where the media have nothing to learn from, the effect is bypassed; it is reported.",
         [clip("a.wav", r(0, 500), effects=[denoise(learn={"start": t(0), "end": t(4801)})])], 500,
         [run(0, 500, "a.wav", 0)], warns=True)
    cuts("denoise-disabled", "A disabled effect is not applied.",
         [clip("a.wav", r(0, 500), effects=[{**denoise(), "enabled": False}])], 500, [run(0, 500, "a.wav", 0)])


def editor_effect(name, *parameters, **more):
    """An effect whose parameters have an identifier, decibels and frames."""
    return {"OTIO_SCHEMA": "Effect.1", "effect_name": "Editor Effect", "metadata": {"Editor_A": {
        "Effect Name": name, "Enabled": True, "Parameters": list(parameters), **more}}}


def editor_parameter(name, value, keys=None, default=0):
    return {"Parameter ID": name, "Parameter Value": value, "Default Parameter Value": default,
            "Key Frames": {str(frame): {"Value": level} for frame, level in (keys or {}).items()}}


def display_effect(*parameters):
    """An effect whose parameters have a name to show, factors and positions."""
    return {"OTIO_SCHEMA": "Effect.1", "effect_name": "Volume", "metadata": {"Editor_B": {
        "MatchName": "Volume", "Parameters": list(parameters)}}}


def display_parameter(name, start=None, keys=None, rate=RATE):
    result = {"DisplayName": name, "ID": 1,
              "Keyframes": [{"Position": t(position, rate), "Value": value} for position, value in keys or []]}
    if start is not None:
        result["StartValue"] = {"Position": t(-10800000, 30), "Value": start}
    return result


def plain_effect(**metadata):
    return {"OTIO_SCHEMA": "Effect.1", "name": "level", "metadata": metadata}


# A moving gain may be smoothed against clicks, and is where it leads to by then.
SETTLING = RATE // 100


def level_case(name, why, effects, channels, source=r(1000, 3000), skipped=(), **more):
    if skipped:
        more["skipped"] = list(skipped)
    case("level-" + name, why, timeline(track(clip("a.wav", source, effects=effects))), source["duration"]["value"],
         channels, **more)


def moving(start, end):
    """Full level to start, a tenth from end on, and what is not compared between them."""
    return ([[run(0, start, "a.wav", 1000), run(end, 3000, "a.wav", 1000 + end, gain=0.1)]], r(1000, 3000),
            [[start, end + SETTLING]])


def level_cases():
    tenth = [[run(0, 3000, "a.wav", 1000, gain=0.1)]]
    same = [[run(0, 3000, "a.wav", 1000)]]
    level_case("parameter-id", "\"Parameter ID\" volume is in decibels.",
               [editor_effect("Clip Volume", editor_parameter("volume", -20))], tenth)
    level_case("parameter-id-keyframes", "Its keyframes are frames from the clip's start, and go before its value.",
               [editor_effect("Clip Volume", editor_parameter("volume", -2, {1200: -20, 480: 0}))], *moving(480, 1200))
    level_case("parameter-id-ramp", "Between keyframes decibels go in a straight line. Who follows it smoothed over some "
               "milliseconds is late by them; a line of factors would be off by twice as much.",
               [editor_effect("Clip Volume", editor_parameter("volume", 0, {0: 0, 3000: -20}))],
               [[run(0, 3000, "a.wav", 1000, ramp=["decibels", 0, 3000, 0, -20])]], within=300)
    level_case("parameter-id-silence", "Its lowest volume, -100, is silence.",
               [editor_effect("Clip Volume", editor_parameter("volume", -100))], [[]])
    level_case("parameter-id-fades", "faderIn and faderOut are frames of the clip's rate; the shape is the render's.",
               [editor_effect("Clip Fader", editor_parameter("faderIn", 480), editor_parameter("faderOut", 240))],
               [[run(0, 480, "a.wav", 1000, fade=["equal-power", "in", 0, 480]), run(480, 2760, "a.wav", 1480),
                 run(2760, 3000, "a.wav", 3760, fade=["equal-power", "out", 2760, 3000])]])
    case("level-parameter-id-pan", "pan -100 is the very left.",
         timeline(track(clip("stereo.wav", r(0, 500), sonaro={"channels": [1]},
         effects=[editor_effect("Pan", editor_parameter("pan", -100))])), sonaro={"layout": "stereo"}), 500,
         [[run(0, 500, "stereo.wav", 0)], []])
    level_case("display-name", "\"DisplayName\" Level is a factor, its StartValue holds wherever it stands.",
               [display_effect(display_parameter("Mute"), display_parameter("Level", 0.1))], tenth)
    level_case("display-name-keyframes", "Its positions are times of the media: 1500 is the clip's 500. A guess.",
               [display_effect(display_parameter("Level", 0.7, [(1500, 1), (2700, 0.1)]))], *moving(500, 1700),
               warns=True)
    level_case("display-name-ramp", "Between keyframes factors go in a straight line, which is followed smoothed.",
               [display_effect(display_parameter("Level", 0.7, [(1000, 1), (4000, 0)]))],
               [[run(0, 3000, "a.wav", 1000, ramp=["linear", 0, 3000, 1, 0])]], within=400, warns=True)
    level_case("display-name-clip-times", "Where no position falls into the media's range they count from the clip's "
               "start. A guess.", [display_effect(display_parameter("Level", 1, [(0, 1), (48, 1), (400, 0.1)]))],
               [[run(0, 48, "a.wav", 3000), run(400, 1000, "a.wav", 3400, gain=0.1)]], r(3000, 1000),
               skipped=[[48, 400 + SETTLING]], warns=True)
    level_case("display-name-mute", "Mute, from its keyframe on. A jump may be rounded off against clicks.",
               [display_effect(display_parameter("Mute", None, [(1000, False), (2280, True)]))],
               [[run(0, 1280, "a.wav", 1000)]], skipped=[[1280, 1280 + SETTLING]], warns=True)
    level_case("name-and-value", "A list of parameters with names; a factor, which is a guess.",
               [plain_effect(x={"Params": [{"Name": "Level", "Value": "0.1"}]})], tenth, warns=True)
    level_case("object", "A value with its unit.", [plain_effect(gain={"value": -20, "unit": "dB"})], tenth)
    level_case("list", "Keyframes, in seconds from the clip's start.",
               [plain_effect(gain_db=[{"time": 0.01, "value": 0}, {"time": 0.025, "value": -20}])],
               *moving(480, 1200), warns=True)
    level_case("value", "A value under its name.", [plain_effect(Gain_dB=-20)], tenth)
    case("level-control-points", "Control points in a clip's own metadata: fractions of its length.",
         timeline(track(clip("a.wav", r(1000, 3000), metadata={"x": {"Gain_dB": {"ControlPoints": [
             {"Time": "1/4", "Value": -20}, {"Time": "1/1", "Value": -20}]}}}))), 3000, tenth)
    level_case("disabled", "Effects that are switched off, by whichever key, are not heard and not reported.",
               [editor_effect("Clip Volume", editor_parameter("volume", -20), Enabled=False),
                {**plain_effect(gain_db=-20), "enabled": False}], same)
    level_case("at-default", "Effects at their defaults are not reported, of whatever kind.",
               [editor_effect("Clip Volume", editor_parameter("volume", 0), editor_parameter("faderIn", 0)),
                editor_effect("Equalizer", editor_parameter("band1", 3, default=3)),
                editor_effect("Transform"), display_effect(display_parameter("Mute"))], same)
    level_case("not-read", "A level in a form that is not known is not heard, and reported as one that is not read.",
               [editor_effect("Clip Volume", editor_parameter("volume", "loud")),
                plain_effect(x={"Effect Name": "Channel Volume", "left": 0.3})], same, unread=2)
    for channels, unread in ((1, 1), (2, 0)):
        heard = {"x": {"Channels": [{"Source Channel ID": channel} for channel in range(channels)]}}
        case(f"level-channels-{channels}-of-2", "Where another program takes fewer channels than the media have, all "
             "are heard, and it is reported.",
             timeline(track(clip("stereo.wav", r(0, 500), metadata=heard))), 500,
             [[run(0, 500, "stereo.wav", 0)], [run(0, 500, "stereo.wav", 0, channel=1)]],
             **({"unread": unread} if unread else {}))
    solo = {"x": {"SoloOn": True, "mute": False}}
    case("level-solo-not-read", "A solo that another program wrote is reported as not read.",
         timeline(track(clip("a.wav", r(1000, 3000)), metadata=solo)), 3000, same, unread=1)


def layout_cases():
    case("stereo", "Stereo media make a stereo programme.",
         timeline(track(clip("stereo.wav", r(10, 500)))), 500,
         [[run(0, 500, "stereo.wav", 10)], [run(0, 500, "stereo.wav", 10, channel=1)]])
    case("mono-and-stereo", "Mono beside stereo is heard at full level on both sides.",
         timeline(track(clip("stereo.wav", r(0, 500)), clip("a.wav", r(0, 500)))), 1000,
         [[run(0, 500, "stereo.wav", 0), run(500, 1000, "a.wav", 0)],
         [run(0, 500, "stereo.wav", 0, channel=1), run(500, 1000, "a.wav", 0)]])
    cuts("mono-programme", "A programme that is asked to be mono has half of each side.",
         [clip("stereo.wav", r(0, 500))], 500,
         [run(0, 500, "stereo.wav", 0, gain=0.5), run(0, 500, "stereo.wav", 0, channel=1, gain=0.5)], layout="mono")
    case("timeline-layout", "The timeline's own layout.",
         timeline(track(clip("a.wav", r(0, 500))), sonaro={"layout": "stereo"}), 500,
         [[run(0, 500, "a.wav", 0)], [run(0, 500, "a.wav", 0)]])
    case("pan", "A pan to the very left leaves nothing on the right.",
         timeline(track(clip("stereo.wav", r(0, 500), sonaro={"channels": [1]}), sonaro={"pan": -1})), 500,
         [[run(0, 500, "stereo.wav", 0)], []])
    case("channels-lost", "Of three channels without places a stereo programme hears two; it is reported.",
         timeline(track(clip("three.wav", r(0, 400)))), 400,
         [[run(0, 400, "three.wav", 0)], [run(0, 400, "three.wav", 0, channel=1)]], warns=True)


def marker(name, start, duration=0):
    return {"OTIO_SCHEMA": "Marker.2", "name": name, "marked_range": r(start, duration)}


def label_cases():
    made = timeline(track(gap(100), clip("a.wav", r(1000, 500), markers=[marker("clip", 1200)]),
                          markers=[marker("track", 300, 100)]), source_range=r(50, 550),
                    markers=[marker("stack", 60), marker("cut away", 20)])
    made["global_start_time"] = t(86400, 24)
    case("markers", "Markers stand in the time of what carries them; those that are cut away are gone. The global "
         "start time is a label and moves nothing.",
         made, 550, [[run(50, 550, "a.wav", 1000)]], markers=[["stack", 10], ["track", 250], ["clip", 250]],
         global_start=3600)
    newer = {**marker("newer", 60), "OTIO_SCHEMA": "Marker.3",
             "color": {"OTIO_SCHEMA": "Color.1", "r": 1.0, "g": 0, "b": 0, "a": 1, "name": "Red"}}
    cuts("newer-marker", "Marker.3 has a Color; nothing of it is a guess.",
         [clip("a.wav", r(1000, 500), markers=[{**newer, "marked_range": r(1060, 0)}])], 500,
         [run(0, 500, "a.wav", 1000)], markers=[["newer", 60]])


def make_all():
    for define in (cut_cases, nesting_cases, rounding_cases, transition_cases, enabled_cases, speed_cases,
                   media_cases, mix_cases, multicam_cases, denoise_cases, level_cases, layout_cases, label_cases):
        define()
    files = {"media/" + name: wave_file(name) for name in MEDIA}
    for name, (made, expected) in CASES.items():
        expected["media"] = {media: {"rate": values[0], "channels": values[1], "frames": values[2],
                                     "first": values[3]} for media, values in MEDIA.items()
                             if any(part["media"] == media for parts in expected["channels"] for part in parts)}
        made["name"] = name
        made.setdefault("metadata", {})["why"] = expected["why"]
        for suffix, value in ((".otio", made), (".expected.json", expected)):
            files["cases/" + name + suffix] = (json.dumps(value, separators=(",", ":")) + "\n").encode()
    return files


def main():
    files = make_all()
    if "--check" in sys.argv[1:]:
        there = {path.relative_to(HERE).as_posix(): path.read_bytes()
                 for folder in ("media", "cases") for path in (HERE / folder).iterdir()}
        differing = sorted(name for name in files.keys() | there.keys() if files.get(name) != there.get(name))
        sys.exit("Run generate.py again; these differ: " + ", ".join(differing) if differing else 0)
    for name, data in files.items():
        (HERE / name).parent.mkdir(exist_ok=True)
        (HERE / name).write_bytes(data)
    print(len(CASES), "cases,", sum(map(len, files.values())) // 1024, "KiB")


main()
