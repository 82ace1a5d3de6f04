#include "TimelineRenderReport.h"

#include "Console.h"
#include "Json.h"
#include "Levels.h"
#include "MediaRows.h"
#include "RenderReport.h"
#include "RenderedFileRows.h"
#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Base/PrintableText.h"
#include "SonaroHost/Base/TimePosition.h"
#include "SonaroHost/Otio/Labels.h"
#include "TimelineNotes.h"
#include "TimelineRows.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <map>
#include <utility>

namespace SonaroCommand
{

using namespace SonaroHost;
using namespace SonaroHost::Otio;

namespace
{

// The version of the report's keys: one more for any change that a reader would stumble over.
constexpr int kTimelineReportVersion = 1;

std::string FormatLoudness(LoudnessReading const& inReading)
{
	std::array<char, 64> text{};
	std::snprintf(text.data(), text.size(), "%8s LUFS %8s dBTP",
		FormatDecibels(inReading.mIntegrated, 1).c_str(),
		FormatDecibels(ToDecibels(inReading.mTruePeak), 2).c_str());
	return text.data();
}

// One line for each track that was measured, nested ones indented, and one for the mix.
std::string MakeLoudnessTable(TimelineRenderJob const& inJob, RenderSummary const& inSummary)
{
	std::string text;
	for (std::size_t i = 0; i < inSummary.mTracks.size(); ++i)
	{
		TrackRow const& row = inJob.GetSequence().mTracks[i];
		if (inSummary.mTracks[i])
		{
			text += FormatLoudness(*inSummary.mTracks[i]) + "  " + std::string(2 * row.mDepth, ' ') +
					MakePrintable(row.mTrack) + "\n";
		}
	}
	if (inSummary.mMix && !text.empty())
	{
		text += FormatLoudness(*inSummary.mMix) + "  the mix\n";
	}
	return text;
}

std::string DescribeFile(
	TimelineRenderJob const& inJob, RenderedFile const& inFile, OutputFormat const& inFormat)
{
	bool const isDithered = inFormat.mDither == Dither::kTriangular;
	std::string text = MakePrintable(ShowOutput(inFile.mPath.string())) + ": " +
					   FormatTime(inFile.mRange.mFrames, inJob.GetSampleRate()) + " (" +
					   std::to_string(inFile.mRange.mFrames) + " samples), " +
					   GetLayoutName(inJob.GetOutputLayout()) + ", " + std::to_string(inJob.GetSampleRate()) +
					   " Hz, " + GetName(inFormat.mSamples) + " " + GetName(inFormat.mContainer) +
					   (isDithered ? ", dithered" : "") + "\n  peak " + FormatPeak(inFile.mPeak);
	if (inFile.mLoudness)
	{
		text += ", true peak " + FormatDecibels(ToDecibels(inFile.mLoudness->mTruePeak), 2) +
				" dBTP, loudness " + FormatDecibels(inFile.mLoudness->mIntegrated, 1) + " LUFS";
	}
	return text + DescribeLimiting(inFile) + "\n";
}

double GetRealTimeFactor(TimelineRenderJob const& inJob, RenderSummary const& inSummary)
{
	double const seconds = static_cast<double>(inJob.GetRange().mFrames) / inJob.GetSampleRate();
	return inSummary.mElapsedSeconds > 0.0 ? seconds / inSummary.mElapsedSeconds : 0.0;
}

Json Summarize(std::string const& inInput, TimelineRenderJob const& inJob, RenderSummary const& inSummary,
	OutputLevels const& inLevels)
{
	Json json;
	json["schema"] = "sonaro.timeline-render";
	json["version"] = kTimelineReportVersion;
	json["input"] = inInput;
	json["programme"] = DescribeProgramme(inJob.GetSequence());
	json["range"] = {{"firstSample", inJob.GetRange().mFirstFrame}, {"samples", inJob.GetRange().mFrames}};
	json["outputs"] = ListFiles(inSummary, inJob.GetOutputLayout(), inJob.GetSampleRate());
	AddMix(json, inSummary, inLevels);
	json["missing"] = ListMissing(inJob.GetSequence().mMissing);
	json["levelsNotRead"] = CountUnreadLevels(inJob.GetNotes());
	json["notes"] = ListNotes(inJob.GetNotes());
	json["damaged"] = ListDamaged(inSummary.mDamaged);
	json["elapsedSeconds"] = inSummary.mElapsedSeconds;
	json["realTimeFactor"] = GetRealTimeFactor(inJob, inSummary);
	return json;
}

// What the graph reports of a track is found by its place; tracks of one name come in the same order.
Json ListTracks(TimelineRenderJob const& inJob, RenderSummary const& inSummary)
{
	std::multimap<std::string, Sequence::TrackReport const*> reports;
	for (Sequence::TrackReport const& report : inSummary.mGraph.mTracks)
	{
		reports.emplace(report.mPlace, &report);
	}
	Json list = Json::array();
	for (std::size_t i = 0; i < inJob.GetSequence().mTracks.size(); ++i)
	{
		TrackRow const& row = inJob.GetSequence().mTracks[i];
		Json json = DescribeTrack(row);
		if (auto const found = row.mIsHeard ? reports.find(row.mTrack) : reports.end();
			found != reports.end())
		{
			json["aheadSamples"] = found->second->mAheadFrames;
			json["latencySamples"] = found->second->mLatencyFrames;
			json["waitSamples"] = found->second->mWaitFrames;
			reports.erase(found);
		}
		if (i < inSummary.mTracks.size() && inSummary.mTracks[i])
		{
			AddLoudness(json, *inSummary.mTracks[i]);
		}
		list.push_back(std::move(json));
	}
	return list;
}

// Adds the latencies of items' effects; items of the same name on the same track have the same ones.
void AddLatencies(Json& ioClips, Sequence::GraphReport const& inReport)
{
	std::map<std::pair<std::string, std::string>, std::int64_t> latencies;
	for (Sequence::ItemReport const& item : inReport.mItems)
	{
		latencies[{inReport.mTracks[item.mTrack].mPlace, item.mName}] = item.mLatencyFrames;
	}
	for (Json& clip : ioClips)
	{
		std::string const name =
			MakeLabel(clip["name"].get<std::string>(), "clip", clip["place"].get<std::string>());
		auto const found = latencies.find({clip["track"].get<std::string>(), name});
		clip["latencySamples"] = found == latencies.end() ? 0 : found->second;
	}
}

Json Report(std::string const& inInput, TimelineRenderJob const& inJob, RenderSummary const& inSummary,
	OutputLevels const& inLevels)
{
	Json json = Summarize(inInput, inJob, inSummary, inLevels);
	json["tracks"] = ListTracks(inJob, inSummary);
	json["clips"] = ListClips(inJob.GetSequence().mClips);
	if (!inSummary.mFiles.empty())
	{
		AddLatencies(json["clips"], inSummary.mGraph);
	}
	json["markers"] = ListMarkers(inJob.GetSequence());
	return json;
}

} // namespace

std::string SummarizeForPeople(TimelineRenderJob const& inJob, RenderSummary const& inSummary)
{
	std::string text;
	for (RenderedFile const& file : inSummary.mFiles)
	{
		text += DescribeFile(inJob, file, inSummary.mFormat);
	}
	text += MakeLoudnessTable(inJob, inSummary) + DescribeNormalizing(inSummary);
	for (Note const& note : inJob.GetRangeNotes())
	{
		text += note.mText + "\n";
	}
	if (std::size_t const levels = CountUnreadLevels(inJob.GetNotes()))
	{
		text += std::to_string(levels) + (levels == 1 ? " level" : " levels") +
				" of other programs not read: parts may be too loud or too quiet\n";
	}
	std::array<char, 64> speed{};
	std::snprintf(speed.data(), speed.size(), "%.0f times faster than real time\n",
		GetRealTimeFactor(inJob, inSummary));
	return text + speed.data();
}

std::string SummarizeForMachines(std::string const& inInput, TimelineRenderJob const& inJob,
	RenderSummary const& inSummary, OutputLevels const& inLevels)
{
	return ToText(Summarize(inInput, inJob, inSummary, inLevels));
}

std::string ReportForMachines(std::string const& inInput, TimelineRenderJob const& inJob,
	RenderSummary const& inSummary, OutputLevels const& inLevels)
{
	return ToText(Report(inInput, inJob, inSummary, inLevels));
}

std::string ReportRefusal(std::string const& inInput, TimelineRenderJob const& inJob,
	OutputLevels const& inLevels, std::string const& inReason)
{
	Json json = Report(inInput, inJob, {}, inLevels);
	json["refused"] = inReason;
	return ToText(json);
}

} // namespace SonaroCommand
