#include "TimelineRenderReport.h"

#include "EffectRows.h"
#include "Levels.h"
#include "MediaRows.h"
#include "RenderReport.h"
#include "RenderedFileRows.h"
#include "SonaroHost/Base/NumberText.h"
#include "SonaroHost/Base/PrintableText.h"
#include "SonaroHost/Otio/Labels.h"
#include "Terminal/Console.h"
#include "TimelineNotes.h"
#include "TimelineRows.h"

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
		FormatFixed(inReading.mIntegrated, 1).c_str(),
		FormatFixed(ToDecibels(inReading.mTruePeak), 2).c_str());
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

Json Summarize(std::string const& inInput, TimelineRenderJob const& inJob, RenderSummary const& inSummary,
	OutputLevels const& inLevels, std::string const& inRefusal)
{
	Json json{{"schema", "sonaro.timeline-render"}, {"version", kTimelineReportVersion}, {"input", inInput},
		{"programme", DescribeProgramme(inJob.GetSequence())},
		{"range", {{"firstSample", inJob.GetRange().mFirstFrame}, {"samples", inJob.GetRange().mFrames}}},
		{"outputs", ListFiles(inSummary, inJob.GetOutputLayout(), inJob.GetSampleRate())}};
	AddBinaural(json["programme"], inJob.GetSequence().mDescription->mBinaural);
	AddMix(json, inSummary, inLevels);
	AddOneRun(json, inSummary);
	json["effects"] = ListEffects(inSummary.mGraph);
	json.update(Json{{"missing", ListMissing(inJob.GetSequence().mMissing)},
		{"levelsNotRead", CountUnreadLevels(inJob.GetNotes())}, {"notes", ListNotes(inJob.GetNotes())},
		{"damaged", ListDamaged(inSummary.mDamaged)},
		{"learnedNoise", ListLearnedNoise(inSummary.mLearnedNoise)},
		{"elapsedSeconds", inSummary.mElapsedSeconds},
		{"realTimeFactor",
			GetRealTimeFactor(inJob.GetRange().mFrames, inJob.GetSampleRate(), inSummary.mElapsedSeconds)}});
	if (!inRefusal.empty())
	{
		json["refused"] = inRefusal;
	}
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

} // namespace

std::string SummarizeForPeople(TimelineRenderJob const& inJob, RenderSummary const& inSummary)
{
	std::string text;
	for (RenderedFile const& file : inSummary.mFiles)
	{
		text += DescribeFormat(MakePrintable(ShowOutput(file.mPath.string())), file, inSummary,
					inJob.GetOutputLayout()) +
				"  " + DescribePeak(file);
	}
	text += DescribeLearnedNoise(inSummary) + DescribeBinaural(inJob.GetSequence().mDescription->mBinaural) +
			MakeLoudnessTable(inJob, inSummary) + DescribeNormalizing(inSummary) + DescribeOneRun(inSummary);
	for (Note const& note : inJob.GetRangeNotes())
	{
		text += note.mText + "\n";
	}
	if (std::size_t const levels = CountUnreadLevels(inJob.GetNotes()))
	{
		text += FormatCount(levels, "level") +
				" of other programs not read: parts may be too loud or too quiet\n";
	}
	return text + DescribeRealTimeFactor(GetRealTimeFactor(
					  inJob.GetRange().mFrames, inJob.GetSampleRate(), inSummary.mElapsedSeconds));
}

std::string SummarizeForMachines(std::string const& inInput, TimelineRenderJob const& inJob,
	RenderSummary const& inSummary, OutputLevels const& inLevels, std::string const& inRefusal)
{
	return ToText(Summarize(inInput, inJob, inSummary, inLevels, inRefusal));
}

Json MakeReport(std::string const& inInput, TimelineRenderJob const& inJob, RenderSummary const& inSummary,
	OutputLevels const& inLevels, std::string const& inRefusal)
{
	Json json = Summarize(inInput, inJob, inSummary, inLevels, inRefusal);
	json["tracks"] = ListTracks(inJob, inSummary);
	json["clips"] = ListClips(inJob.GetSequence().mClips);
	if (!inSummary.mFiles.empty())
	{
		AddLatencies(json["clips"], inSummary.mGraph);
	}
	json["angles"] = ListAngles(inJob.GetSequence().mAngles);
	json["markers"] = ListMarkers(inJob.GetSequence());
	return json;
}

} // namespace SonaroCommand
