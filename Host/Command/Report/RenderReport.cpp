#include "RenderReport.h"

#include "EffectRows.h"
#include "Levels.h"
#include "MediaRows.h"
#include "RenderedFileRows.h"
#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Metering/LoudnessMeter.h"
#include "Terminal/Console.h"

namespace SonaroCommand
{

using namespace SonaroHost;

namespace
{

// The version of the report's keys: one more for any change that a reader would stumble over.
constexpr int kSoundFilesReportVersion = 1;

std::string DescribePlayback(PlaybackSummary const& inPlayback)
{
	ReadAheadReport const& readAhead = inPlayback.mReadAhead;
	return "read ahead: " + std::to_string(inPlayback.mMisses) +
		   (inPlayback.mMisses == 1 ? " miss" : " misses") + ", disk load at most " +
		   std::to_string(readAhead.mDiskLoadPercent) + " %" +
		   (readAhead.mGivenUp > 0 ? ", " + std::to_string(readAhead.mGivenUp) + " batches requested again"
								   : "") +
		   (readAhead.mWasBehind ? ", fell behind" : ", never behind") + "\n";
}

// Where each input lies in the output.
std::string DescribeInputs(std::vector<std::string> const& inInputs, ProgrammePlan const& inPlan)
{
	std::string text;
	for (std::size_t i = 0; i < inInputs.size(); ++i)
	{
		text += "from " + inInputs[i] + " at " +
				FormatTime(inPlan.GetClips()[i].mPosition, inPlan.GetSampleRate()) + "\n";
	}
	return text;
}

Json ListInputs(std::vector<std::string> const& inInputs, ProgrammePlan const& inPlan)
{
	Json list = Json::array();
	for (std::size_t i = 0; i < inInputs.size(); ++i)
	{
		PlannedClip const& clip = inPlan.GetClips()[i];
		list.push_back({{"path", inInputs[i]}, {"position", clip.mPosition}, {"samples", clip.mFrames}});
	}
	return list;
}

void AddTimes(Json& ioJson, RenderSummary const& inSummary)
{
	ioJson["elapsedSeconds"] = inSummary.mElapsedSeconds;
	ioJson["realTimeFactor"] =
		GetRealTimeFactor(inSummary.GetFrames(), inSummary.mSampleRate, inSummary.mElapsedSeconds);
	if (auto const& playback = inSummary.mPlayback)
	{
		ioJson["playback"] = {{"misses", playback->mMisses}, {"missedSamples", playback->mMissedFrames},
			{"diskLoadPercent", playback->mReadAhead.mDiskLoadPercent},
			{"batchesGivenUp", playback->mReadAhead.mGivenUp},
			{"wasBehind", playback->mReadAhead.mWasBehind}};
	}
}

// Lists the clips as the report of a timeline does. Where they overlap, the later one is heard alone.
Json ListSoundFiles(ProgrammePlan const& inPlan)
{
	Json list = Json::array();
	for (PlannedClip const& clip : inPlan.GetClips())
	{
		AudioFileInfo const& info = clip.GetInfo();
		Json& row = list.emplace_back(Json{{"name", info.mPath.filename().string()}, {"status", "heard"},
			{"firstSample", clip.mPosition}, {"endSample", clip.mPosition + clip.mFrames},
			{"media", info.mPath.string()}, {"mediaRate", info.mSampleRate},
			{"firstMediaSample", clip.mFirstFrame}, {"endMediaSample", clip.mFirstFrame + clip.mSourceFrames},
			{"speed", inPlan.IsReversed() ? -inPlan.GetSpeed() : inPlan.GetSpeed()},
			{"keepPitch", inPlan.KeepsPitch()}, {"pitch", inPlan.GetSemitones()}});
		if (info.mDenoise)
		{
			row["denoise"] = DescribeDenoise(*info.mDenoise);
		}
	}
	return list;
}

} // namespace

std::string SummarizeForPeople(std::vector<std::string> const& inInputs, std::string const& inOutput,
	ClipRenderJob const& inJob, RenderSummary const& inSummary)
{
	return DescribeFormat(ShowOutput(inOutput), inSummary.GetFile(), inSummary, inJob.GetOutputLayout()) +
		   DescribeInputs(inInputs, inJob.GetPlan()) + DescribeLearnedNoise(inSummary) +
		   DescribeBinaural(inJob.GetBinaural()) + DescribePeak(inSummary.GetFile()) +
		   DescribeNormalizing(inSummary) + DescribeOneRun(inSummary) +
		   DescribeRealTimeFactor(
			   GetRealTimeFactor(inSummary.GetFrames(), inSummary.mSampleRate, inSummary.mElapsedSeconds)) +
		   (inSummary.mPlayback ? DescribePlayback(*inSummary.mPlayback) : "");
}

std::string SummarizeForMachines(std::vector<std::string> const& inInputs, std::string const& inOutput,
	ClipRenderJob const& inJob, RenderSummary const& inSummary)
{
	RenderedFile const& file = inSummary.GetFile();
	// Numbers that are not finite become null.
	Json json{{"inputs", ListInputs(inInputs, inJob.GetPlan())}, {"output", inOutput},
		{"format", GetName(inSummary.mFormat.mContainer)}, {"samples", inSummary.GetFrames()},
		{"seconds", static_cast<double>(inSummary.GetFrames()) / inSummary.mSampleRate},
		{"channels", inJob.GetOutputLayout().size()}, {"layout", GetLayoutName(inJob.GetOutputLayout())},
		{"rate", inSummary.mSampleRate}, {"encoding", GetName(inSummary.mFormat.mSamples)},
		{"dither", inSummary.mFormat.mDither == Dither::kTriangular ? "tpdf" : "none"}, {"peak", file.mPeak},
		{"peakDbfs", ToDecibels(static_cast<double>(file.mPeak))}};
	AddBinaural(json, inJob.GetBinaural());
	if (file.mLoudness)
	{
		json["truePeakDbtp"] = GetNumberOrSilence(ToDecibels(file.mLoudness->mTruePeak));
		json["integratedLufs"] = GetNumberOrSilence(file.mLoudness->mIntegrated);
	}
	json["clippedSamples"] = file.mClippedSamples;
	AddOneRun(json, inSummary);
	json["effects"] = ListEffects(inSummary.mGraph);
	json["learnedNoise"] = ListLearnedNoise(inSummary.mLearnedNoise);
	AddTimes(json, inSummary);
	return ToText(json);
}

std::string DescribeRefusalForMachines(std::vector<std::string> const& inInputs, std::string const& inOutput,
	ClipRenderJob const& inJob, std::string const& inRefusal)
{
	return ToText(Json{
		{"inputs", ListInputs(inInputs, inJob.GetPlan())}, {"output", inOutput}, {"refused", inRefusal}});
}

Json MakeReport(std::vector<std::string> const& inInputs, ClipRenderJob const& inJob,
	RenderSummary const& inSummary, OutputLevels const& inLevels, std::string const& inRefusal)
{
	std::int64_t const frames = inJob.GetFrames();
	int const rate = inJob.GetSampleRate();
	Json json{{"schema", "sonaro.file-render"}, {"version", kSoundFilesReportVersion},
		{"inputs", ListInputs(inInputs, inJob.GetPlan())},
		{"programme", {{"rate", rate}, {"samples", frames}, {"seconds", static_cast<double>(frames) / rate},
						  {"layout", GetLayoutName(inJob.GetOutputLayout())}}},
		{"range", {{"firstSample", 0}, {"samples", frames}}},
		{"outputs", ListFiles(inSummary, inJob.GetOutputLayout(), rate)}};
	AddBinaural(json["programme"], inJob.GetBinaural());
	AddMix(json, inSummary, inLevels);
	AddOneRun(json, inSummary);
	json["effects"] = ListEffects(inSummary.mGraph);
	if (inRefusal.empty())
	{
		AddTimes(json, inSummary);
	}
	else
	{
		json["refused"] = inRefusal;
	}
	json["damaged"] = ListDamaged(inSummary.mDamaged);
	json["learnedNoise"] = ListLearnedNoise(inSummary.mLearnedNoise);
	json["clips"] = ListSoundFiles(inJob.GetPlan());
	return json;
}

} // namespace SonaroCommand
