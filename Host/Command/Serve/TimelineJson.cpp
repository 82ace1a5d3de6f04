#include "TimelineJson.h"

#include "Report/TimelineNotes.h"
#include "Report/TimelineRows.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Files/WholeFile.h"
#include "SonaroHost/OtioSequence/ProgrammeTimecode.h"

#include <chrono>
#include <filesystem>
#include <system_error>

namespace SonaroCommand::Serve
{

using namespace SonaroHost;
using SonaroHost::Serve::MixFile;
using SonaroHost::Serve::ServedTimeline;

namespace
{

constexpr int kServedVersion = 1;
// For the graph of which it is asked whether starts are exact.
constexpr auto kOpenTime = std::chrono::seconds(20);

Json MakeRationalTime(double inSamples, int inRate)
{
	return {{"OTIO_SCHEMA", "RationalTime.1"}, {"value", inSamples}, {"rate", inRate}};
}

Json MakeMarker(Json const& inComment, double inFirstSample, int inRate)
{
	double const sample = inFirstSample + inComment["sample"].get<double>();
	return {{"OTIO_SCHEMA", "Marker.2"}, {"name", inComment["text"]}, {"color", "YELLOW"},
		{"marked_range", {{"OTIO_SCHEMA", "TimeRange.1"}, {"start_time", MakeRationalTime(sample, inRate)},
							 {"duration", MakeRationalTime(0.0, inRate)}}},
		{"metadata", {{"sonaro", {{"comment", inComment["id"]}}}}}};
}

// Where the stack's time begins in the programme, in samples.
double FindFirstSample(Json const& inStack, int inRate)
{
	auto const range = inStack.find("source_range");
	if (range == inStack.end() || !range->is_object())
	{
		return 0.0;
	}
	Json const& start = range->at("start_time");
	return start.at("value").get<double>() * inRate / start.at("rate").get<double>();
}

std::string ReadText(std::filesystem::path const& inPath)
{
	std::error_code error;
	bool const isFolder = std::filesystem::is_directory(inPath, error);
	return SonaroHost::ReadWholeFile(isFolder ? inPath / "content.otio" : inPath, "put it back");
}

} // namespace

Json DescribeTimeline(ServedTimeline& ioTimeline)
{
	Otio::TimelineSequence const& sequence = ioTimeline.GetSequence();
	std::filesystem::path const& path = ioTimeline.GetRequest().mInput;
	auto const file = ioTimeline.OpenWave({}, MixFile::Clock::now() + kOpenTime);
	Json json{{"schema", "sonaro.served-timeline"}, {"version", kServedVersion},
		{"file", (path.has_filename() ? path : path.parent_path()).filename().string()},
		{"tag", ioTimeline.GetTag()}, {"programme", DescribeProgramme(sequence)},
		{"wave", {{"bytes", file->GetLength()}, {"isExactAnywhere", file->GetWhyInOneRun().empty()},
					 {"whyNot", file->GetWhyInOneRun()}, {"warmUpSeconds", file->GetWarmUpSeconds()}}}};
	auto const rate = Otio::FindTimecodeRate(ioTimeline.GetTimeline());
	json["timecodeRate"] = rate ? Json(*rate) : Json();
	json["tracks"] = Json::array();
	unsigned number = 0;
	for (Otio::TrackRow const* const row : ioTimeline.GetTracks())
	{
		Json track{{"number", ++number}};
		track.update(DescribeTrack(*row));
		json["tracks"].push_back(std::move(track));
	}
	json["clips"] = ListClips(sequence.mClips);
	json["angles"] = ListAngles(sequence.mAngles);
	json["markers"] = ListMarkers(sequence);
	json["missing"] = ListMissing(sequence.mMissing);
	json["notes"] = ListNotes(ioTimeline.GetNotes());
	return json;
}

std::string MakeTimelineWithMarkers(ServedTimeline const& inTimeline, Json const& inComments)
{
	std::filesystem::path const& path = inTimeline.GetRequest().mInput;
	if (path.extension() == ".otioz")
	{
		Refuse("comments cannot be written into a bundle in one file; unpack it and serve its folder");
	}
	Json timeline = Json::parse(ReadText(path), nullptr, false);
	try
	{
		Json& stack = timeline.at("tracks");
		int const rate = inTimeline.GetSequence().mSampleRate;
		double const first = FindFirstSample(stack, rate);
		Json markers = stack.value("markers", Json::array());
		for (Json const& comment : inComments)
		{
			markers.push_back(MakeMarker(comment, first, rate));
		}
		stack["markers"] = std::move(markers);
	}
	catch (Json::exception const&)
	{
		RefuseFile(
			path, "has no place for markers that is valid in strict JSON", "save it again by its program");
	}
	return ToText(timeline);
}

} // namespace SonaroCommand::Serve
