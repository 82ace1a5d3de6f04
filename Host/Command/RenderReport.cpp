#include "RenderReport.h"

#include "Console.h"
#include "Json.h"
#include "Levels.h"
#include "MediaRows.h"
#include "RenderedFileRows.h"
#include "SonaroHost/Base/ChannelLayouts.h"

#include <array>
#include <cstdio>

namespace SonaroCommand
{

using namespace SonaroHost;

namespace
{

// The version of the report's keys: one more for any change that a reader would stumble over.
constexpr int kSoundFilesReportVersion = 1;

std::string DescribeLoudness(LoudnessReading const& inLoudness)
{
	return ", true peak " + FormatDecibels(ToDecibels(inLoudness.mTruePeak), 2) + " dBTP, loudness " +
		   FormatDecibels(inLoudness.mIntegrated, 1) + " LUFS";
}

double GetRenderedSeconds(RenderSummary const& inSummary)
{
	return static_cast<double>(inSummary.GetFrames()) / inSummary.mSampleRate;
}

double GetRealTimeFactor(RenderSummary const& inSummary)
{
	return inSummary.mElapsedSeconds > 0.0 ? GetRenderedSeconds(inSummary) / inSummary.mElapsedSeconds : 0.0;
}

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
		Json input;
		input["path"] = inInputs[i];
		input["position"] = clip.mPosition;
		input["samples"] = clip.mFrames;
		list.push_back(input);
	}
	return list;
}

void AddPlayback(Json& ioJson, RenderSummary const& inSummary)
{
	if (inSummary.mPlayback)
	{
		ioJson["playback"]["misses"] = inSummary.mPlayback->mMisses;
		ioJson["playback"]["missedSamples"] = inSummary.mPlayback->mMissedFrames;
		ioJson["playback"]["diskLoadPercent"] = inSummary.mPlayback->mReadAhead.mDiskLoadPercent;
		ioJson["playback"]["batchesGivenUp"] = inSummary.mPlayback->mReadAhead.mGivenUp;
		ioJson["playback"]["wasBehind"] = inSummary.mPlayback->mReadAhead.mWasBehind;
	}
}

// Lists the clips as the report of a timeline does. Where they overlap, the later one is heard alone.
Json ListSoundFiles(ProgrammePlan const& inPlan)
{
	Json list = Json::array();
	for (PlannedClip const& clip : inPlan.GetClips())
	{
		AudioFileInfo const& info = clip.GetInfo();
		list.push_back({{"name", info.mPath.filename().string()}, {"status", "heard"},
			{"firstSample", clip.mPosition}, {"endSample", clip.mPosition + clip.mFrames},
			{"media", info.mPath.string()}, {"mediaRate", info.mSampleRate},
			{"firstMediaSample", clip.mFirstFrame}, {"endMediaSample", clip.mFirstFrame + clip.mSourceFrames},
			{"speed", inPlan.IsReversed() ? -inPlan.GetSpeed() : inPlan.GetSpeed()}});
	}
	return list;
}

} // namespace

std::string DescribeForPeople(std::vector<std::string> const& inInputs, std::string const& inOutput,
	ClipRenderJob const& inJob, RenderSummary const& inSummary)
{
	std::array<char, 64> speed{};
	std::snprintf(
		speed.data(), speed.size(), "%.0f times faster than real time", GetRealTimeFactor(inSummary));
	bool const isDithered = inSummary.mFormat.mDither == Dither::kTriangular;
	return ShowOutput(inOutput) + ": " + FormatTime(inSummary.GetFrames(), inSummary.mSampleRate) + " (" +
		   std::to_string(inSummary.GetFrames()) + " samples), " + GetLayoutName(inJob.GetOutputLayout()) +
		   ", " + std::to_string(inSummary.mSampleRate) + " Hz, " + GetName(inSummary.mFormat.mSamples) +
		   " " + GetName(inSummary.mFormat.mContainer) + (isDithered ? ", dithered" : "") + "\n" +
		   DescribeInputs(inInputs, inJob.GetPlan()) + "peak " + FormatPeak(inSummary.GetFile().mPeak) +
		   (inSummary.GetFile().mLoudness ? DescribeLoudness(*inSummary.GetFile().mLoudness) : "") +
		   DescribeLimiting(inSummary.GetFile()) + "\n" + DescribeNormalizing(inSummary) + speed.data() +
		   "\n" + (inSummary.mPlayback ? DescribePlayback(*inSummary.mPlayback) : "");
}

std::string DescribeForMachines(std::vector<std::string> const& inInputs, std::string const& inOutput,
	ClipRenderJob const& inJob, RenderSummary const& inSummary)
{
	// Numbers that are not finite become null.
	Json json;
	json["inputs"] = ListInputs(inInputs, inJob.GetPlan());
	json["output"] = inOutput;
	json["format"] = GetName(inSummary.mFormat.mContainer);
	json["samples"] = inSummary.GetFrames();
	json["seconds"] = GetRenderedSeconds(inSummary);
	json["channels"] = inJob.GetOutputLayout().size();
	json["layout"] = GetLayoutName(inJob.GetOutputLayout());
	json["rate"] = inSummary.mSampleRate;
	json["encoding"] = GetName(inSummary.mFormat.mSamples);
	json["dither"] = inSummary.mFormat.mDither == Dither::kTriangular ? "tpdf" : "none";
	json["peak"] = inSummary.GetFile().mPeak;
	json["peakDbfs"] = ToDecibels(static_cast<double>(inSummary.GetFile().mPeak));
	if (inSummary.GetFile().mLoudness)
	{
		json["truePeakDbtp"] = GetNumberOrSilence(ToDecibels(inSummary.GetFile().mLoudness->mTruePeak));
		json["integratedLufs"] = GetNumberOrSilence(inSummary.GetFile().mLoudness->mIntegrated);
	}
	json["clippedSamples"] = inSummary.GetFile().mClippedSamples;
	json["elapsedSeconds"] = inSummary.mElapsedSeconds;
	json["realTimeFactor"] = GetRealTimeFactor(inSummary);
	AddPlayback(json, inSummary);
	return ToText(json);
}

std::string ReportForMachines(std::vector<std::string> const& inInputs, ClipRenderJob const& inJob,
	RenderSummary const& inSummary, OutputLevels const& inLevels)
{
	Json json;
	json["schema"] = "sonaro.file-render";
	json["version"] = kSoundFilesReportVersion;
	json["inputs"] = ListInputs(inInputs, inJob.GetPlan());
	json["programme"] = {{"rate", inSummary.mSampleRate}, {"samples", inSummary.GetFrames()},
		{"seconds", GetRenderedSeconds(inSummary)}, {"layout", GetLayoutName(inJob.GetOutputLayout())}};
	json["range"] = {{"firstSample", 0}, {"samples", inSummary.GetFrames()}};
	json["outputs"] = ListFiles(inSummary, inJob.GetOutputLayout(), inSummary.mSampleRate);
	AddMix(json, inSummary, inLevels);
	json["elapsedSeconds"] = inSummary.mElapsedSeconds;
	json["realTimeFactor"] = GetRealTimeFactor(inSummary);
	AddPlayback(json, inSummary);
	json["damaged"] = ListDamaged(inSummary.mDamaged);
	json["clips"] = ListSoundFiles(inJob.GetPlan());
	return ToText(json);
}

} // namespace SonaroCommand
