#!/usr/bin/env python3
"""Makes the example timeline: Examples/Timeline/edit.otio, of the media beside it.

    Examples/make-timeline.py [FILE]     (default: Timeline/edit.otio beside this script)

Needs nothing but Python.
"""

import json
import pathlib
import sys

RATE = 25


def time(seconds):
    return {"OTIO_SCHEMA": "RationalTime.1", "value": float(round(seconds * RATE)), "rate": float(RATE)}


def time_range(start, duration):
    return {"OTIO_SCHEMA": "TimeRange.1", "start_time": time(start), "duration": time(duration)}


def item(schema, name, start, duration, sonaro=None, **more):
    return {
        "OTIO_SCHEMA": schema,
        "name": name,
        "metadata": {"sonaro": sonaro} if sonaro else {},
        "source_range": None if duration is None else time_range(start, duration),
        "effects": [],
        "markers": [],
        "enabled": True,
        **more,
    }


def clip(name, media, start, duration, sonaro=None):
    reference = {
        "OTIO_SCHEMA": "ExternalReference.1",
        "name": "",
        "metadata": {},
        "available_range": None,
        "target_url": f"../Media/{media}.flac",
    }
    return item("Clip.2", name, start, duration, sonaro, media_references={"DEFAULT_MEDIA": reference},
                active_media_reference_key="DEFAULT_MEDIA")


def gap(duration):
    return item("Gap.1", "", 0, duration)


def transition(before, after, sonaro=None):
    return {
        "OTIO_SCHEMA": "Transition.1",
        "name": "",
        "metadata": {"sonaro": sonaro} if sonaro else {},
        "transition_type": "SMPTE_Dissolve",
        "in_offset": time(before),
        "out_offset": time(after),
    }


def track(name, children, sonaro=None):
    return item("Track.1", name, 0, None, sonaro, kind="Audio", children=children)


def marker(name, start, duration):
    return {"OTIO_SCHEMA": "Marker.2", "name": name, "metadata": {}, "color": "GREEN",
            "marked_range": time_range(start, duration)}


def keyframes(*points):
    return {"keyframes": [{"time": t, "value": v, "interpolation": "smooth"} for t, v in points]}


dialogue = track("Dialogue", [
    gap(2),
    clip("The captain", "dialogue", 0, 5.48, {"fade_out": {"duration": 0.08}}),
    gap(0.32),
    clip("The reply", "dialogue-reply", 0, 3.92),
], {"pan": -0.15, "sends": [{"to": "harbour", "gain": -9}]})

# The music makes room while somebody speaks. In the middle it is cut and crossfaded.
music = track("Music", [
    clip("Opening", "music", 0, 5.2, {"fade_in": {"duration": 0.4, "curve": "s-curve"}}),
    transition(0.4, 0.4),
    clip("Refrain", "music", 2, 6.4),
    transition(1.2, 0),
    gap(0.4),
], {"gain": keyframes((0, 2), (1.6, 2), (2.2, -8), (7.2, -8), (7.5, -5), (7.8, -8), (11.2, -8), (11.8, -2))})

# What was mixed elsewhere comes as a nested sequence.
scene = item("Stack.1", "The quay", 0, 6, {"gain": -3}, children=[
    track("Wind", [
        clip("Wind", "effect-wind", 0, 3.6),
        transition(0.4, 0.4, {"curve": "equal-power"}),
        # It slows down, and its pitch falls.
        clip("Wind again", "effect-wind", 0.4, 2.8, {"speed": keyframes((0, 1), (2.8, 0.6))}),
    ], {"sends": [{"to": "air", "gain": -6}]}),
    track("Bell", [gap(0.6), clip("Bell", "effect-bell", 0, 2, {"pan": 0.6}), gap(1),
                   clip("Bell, far away", "effect-bell", 0, 2, {"gain": -9, "pan": -0.4})]),
])
scene["metadata"]["sonaro"]["submixes"] = [{"name": "air", "gain": -3}]
scene["markers"] = [marker("The bell rings", 0.6, 2)]

effects = track("Effects", [
    clip("Wind at sea", "effect-wind", 0.4, 2, {"fade_in": {"duration": 1}}),
    transition(0, 0.6),
    scene,
    transition(0.6, 0),
    gap(2),
], {"sends": [{"to": "harbour", "gain": -12}]})

stack = item("Stack.1", "tracks", 0, None, None, children=[dialogue, music, effects])
stack["markers"] = [marker("Conversation", 2, 9.72), marker("Title", 0, 2)]
timeline = {
    "OTIO_SCHEMA": "Timeline.1",
    "name": "The last boat",
    "metadata": {"sonaro": {"layout": "stereo", "submixes": [{"name": "harbour", "gain": -2}]}},
    "global_start_time": time(10 * 3600),
    "tracks": stack,
}

beside = pathlib.Path(__file__).parent / "Timeline" / "edit.otio"
target = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else beside
target.parent.mkdir(parents=True, exist_ok=True)
target.write_text(json.dumps(timeline, indent="\t") + "\n")
