#include "TimelineJson.h"

namespace SonaroHost::Testing
{

Json Time(double inSeconds)
{
	return {{"OTIO_SCHEMA", "RationalTime.1"}, {"value", inSeconds * 25.0}, {"rate", 25.0}};
}

Json Range(double inStart, double inSeconds)
{
	return {{"OTIO_SCHEMA", "TimeRange.1"}, {"start_time", Time(inStart)}, {"duration", Time(inSeconds)}};
}

Json List(std::initializer_list<Json> inValues)
{
	Json list = Json::array();
	for (Json const& value : inValues)
	{
		list.push_back(value);
	}
	return list;
}

Json With(Json inObject, Json const& inKeys)
{
	inObject.update(inKeys);
	return inObject;
}

Json WithSettings(Json inObject, Json const& inSettings)
{
	inObject["metadata"]["sonaro"] = inSettings;
	return inObject;
}

Json Clip(std::string const& inName, std::string const& inMedia, double inStart, double inSeconds)
{
	return {{"OTIO_SCHEMA", "Clip.1"}, {"name", inName}, {"source_range", Range(inStart, inSeconds)},
		{"media_reference", {{"OTIO_SCHEMA", "ExternalReference.1"}, {"target_url", inMedia}}}};
}

Json Gap(double inSeconds)
{
	return {{"OTIO_SCHEMA", "Gap.1"}, {"source_range", Range(0.0, inSeconds)}};
}

Json Marker(std::string const& inName, double inStart, double inSeconds)
{
	return {{"OTIO_SCHEMA", "Marker.2"}, {"name", inName}, {"marked_range", Range(inStart, inSeconds)}};
}

Json Track(std::string const& inName, std::initializer_list<Json> inChildren)
{
	return {{"OTIO_SCHEMA", "Track.1"}, {"name", inName}, {"kind", "Audio"}, {"children", List(inChildren)}};
}

Json Stack(std::initializer_list<Json> inChildren)
{
	return {{"OTIO_SCHEMA", "Stack.1"}, {"children", List(inChildren)}};
}

Json Timeline(std::initializer_list<Json> inTracks, std::initializer_list<Json> inMarkers)
{
	return {{"OTIO_SCHEMA", "Timeline.1"}, {"name", "test"},
		{"tracks", With(Stack(inTracks), {{"markers", List(inMarkers)}})}};
}

} // namespace SonaroHost::Testing
