#include "Samples.h"

namespace SonaroHost::Otio
{

using nlohmann::json;

namespace
{

// Indices of children, for the tables of the tests: the audio track is 0; on it the first clip is 0, the
// transition 1, the second clip 2, the gap 3, the nested stack 4. The video track is 1.
constexpr char const* kFullTimeline = R"({
	"OTIO_SCHEMA": "Timeline.1", "name": "Reel 1", "global_start_time": {}, "tracks": {
		"OTIO_SCHEMA": "Stack.1", "name": "tracks", "source_range": null, "enabled": true, "effects": [],
		"markers": [{"OTIO_SCHEMA": "Marker.2", "name": "cue", "color": "RED", "marked_range": {}, "metadata": {}}],
		"metadata": {"sonaro": {"fade_in": {"duration": 0.5, "curve": "s-curve"}}},
		"children": [
			{"OTIO_SCHEMA": "Track.1", "name": "A1", "kind": "Audio", "source_range": null, "effects": [],
			 "markers": [], "metadata": {"other": [1, "two"], "sonaro": {"solo": true, "output": "dialogue",
				"sends": [{"to": "reverb", "gain": -12, "pre_fader": true}], "pan": -0.25}},
			 "children": [
				{"OTIO_SCHEMA": "Clip.2", "name": "one", "enabled": true, "source_range": {}, "markers": [],
				 "effects": [{"OTIO_SCHEMA": "LinearTimeWarp.1", "name": "fast", "effect_name": "LinearTimeWarp",
					"time_scalar": -1.0, "metadata": {}}],
				 "metadata": {"sonaro": {"channels": [2, 1], "mute": false, "gain": {"keyframes": [
					{"time": 2, "value": -6, "interpolation": "smooth"}, {"time": {}, "value": 0}]}}},
				 "media_references": {"DEFAULT_MEDIA": {"OTIO_SCHEMA": "ExternalReference.1", "name": "",
					"target_url": "sound/one.wav", "available_range": {}, "available_image_bounds": null}},
				 "active_media_reference_key": "DEFAULT_MEDIA"},
				{"OTIO_SCHEMA": "Transition.1", "name": "x", "transition_type": "SMPTE_Dissolve",
				 "in_offset": {}, "out_offset": {}, "metadata": {"sonaro": {"curve": "linear"}}},
				{"OTIO_SCHEMA": "Clip.2", "name": "two", "source_range": null,
				 "media_references": {"low": {"OTIO_SCHEMA": "MissingReference.1", "available_range": null},
					"high": {"OTIO_SCHEMA": "ExternalReference.1", "target_url": "two.wav",
						"available_range": {}}},
				 "active_media_reference_key": "high"},
				{"OTIO_SCHEMA": "Gap.1", "source_range": {}},
				{"OTIO_SCHEMA": "Stack.1", "name": "scene", "children": [
					{"OTIO_SCHEMA": "Track.1", "kind": "Audio", "children": [
						{"OTIO_SCHEMA": "Clip.1", "name": "tone", "media_reference": {
							"OTIO_SCHEMA": "GeneratorReference.1", "generator_kind": "tone", "parameters": {},
							"available_range": {}}}]}]}]},
			{"OTIO_SCHEMA": "Track.1", "name": "V1", "kind": "Video", "children": [
				{"OTIO_SCHEMA": "Clip.2", "source_range": {}, "effects": [{"OTIO_SCHEMA": "Effect.1",
					"effect_name": "blur"}], "media_references": {"DEFAULT_MEDIA": {
					"OTIO_SCHEMA": "ImageSequenceReference.1", "target_url_base": "frames/"}}}]}]},
	"metadata": {"sonaro": {"layout": "5.1", "gain": -1.5, "submixes": [
		{"name": "dialogue", "gain": 1, "pan": 0, "mute": false, "output": "main"},
		{"name": "main", "output": null}, {"name": "reverb"}]}}})";

} // namespace

json MakeTime(double inValue, double inRate)
{
	return {{"OTIO_SCHEMA", "RationalTime.1"}, {"value", inValue}, {"rate", inRate}};
}

json MakeRange(double inStart, double inDuration, double inRate)
{
	return {{"OTIO_SCHEMA", "TimeRange.1"}, {"start_time", MakeTime(inStart, inRate)},
		{"duration", MakeTime(inDuration, inRate)}};
}

json MakeFullTimeline()
{
	json timeline = json::parse(kFullTimeline);
	json const range = MakeRange(10, 50, 25);
	timeline["global_start_time"] = MakeTime(86400, 24);
	timeline["tracks"]["markers"][0]["marked_range"] = range;
	json& children = timeline["tracks"]["children"][0]["children"];
	children[0]["source_range"] = range;
	children[0]["media_references"]["DEFAULT_MEDIA"]["available_range"] = MakeRange(0, 48000, 48000);
	children[0]["metadata"]["sonaro"]["gain"]["keyframes"][1]["time"] = MakeTime(25, 25);
	children[1]["in_offset"] = MakeTime(5, 29.97);
	children[1]["out_offset"] = MakeTime(0, 29.97);
	children[2]["media_references"]["high"]["available_range"] = range;
	children[3]["source_range"] = range;
	children[4]["children"][0]["children"][0]["media_reference"]["available_range"] = range;
	timeline["tracks"]["children"][1]["children"][0]["source_range"] = range;
	return timeline;
}

json MakeTimeline(json inChildren)
{
	json const track = {{"OTIO_SCHEMA", "Track.1"}, {"kind", "Audio"}, {"children", std::move(inChildren)}};
	return {{"OTIO_SCHEMA", "Timeline.1"},
		{"tracks", {{"OTIO_SCHEMA", "Stack.1"}, {"children", json::array({track})}}}};
}

std::vector<std::string> MakeSeedCorpus()
{
	json const range = MakeRange(0, 30, 30000.0 / 1001.0);
	json const fades = json::parse(R"([{"OTIO_SCHEMA": "Effect.1", "metadata": {"x": {"parameters": [
		{"name": "Level", "keyframes": [{"when": "3", "value": "0.5"}, {"frame": 9, "value": 1}]},
		{"name": "Pan", "value": "1/2"}]}}}, {"OTIO_SCHEMA": "FreezeFrame.1"},
		{"OTIO_SCHEMA": "TimeEffect.1", "metadata": {"gain_db": -3}}])");
	json const pan = json::parse(R"({"x": {"Pan": {"ControlPoints": [{"Time": "0/9", "Value": "1/2"}]}}})");
	json const clip = {{"OTIO_SCHEMA", "Clip.1"}, {"source_range", range}, {"effects", fades},
		{"media_reference", nullptr}, {"metadata", pan},
		{"markers", {{{"OTIO_SCHEMA", "Marker.1"}, {"range", range}}}}};
	json const filler = {{"OTIO_SCHEMA", "Filler.1"}, {"source_range", range}};
	json const stranger = {{"OTIO_SCHEMA", "Title.7"}, {"source_range", range}};
	json timeline = MakeTimeline({clip, filler, stranger});
	json const sequence = {
		{"OTIO_SCHEMA", "Sequence.1"}, {"kind", "Audio"}, {"children", json::array({filler})}};
	json const collection = {{"OTIO_SCHEMA", "SerializeableCollection.1"},
		{"children", json::array({timeline, clip, MakeTimeline(json::array())})}};
	std::string literals = timeline.dump();
	literals.replace(literals.find("29.97"), 5, " -Infinity, \"x\":NaN, \"y\":0.");
	return {MakeFullTimeline().dump(1, '\t'), timeline.dump(), sequence.dump(), collection.dump(), literals,
		timeline["tracks"].dump(), "\xef\xbb\xbf" + timeline.dump()};
}

} // namespace SonaroHost::Otio
