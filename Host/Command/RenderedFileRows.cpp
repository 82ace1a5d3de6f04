#include "RenderedFileRows.h"

#include "Console.h"
#include "Levels.h"
#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Files/StandardStreams.h"
#include "TimelineRows.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <utility>

namespace SonaroCommand
{

using namespace SonaroHost;

Json ListFiles(RenderSummary const& inFiles, SN::AudioChannelLayout const& inLayout, int inSampleRate)
{
	Json list = Json::array();
	for (RenderedFile const& file : inFiles.mFiles)
	{
		Json json;
		json["path"] = file.mPath.string();
		if (!file.mName.empty())
		{
			json["name"] = file.mName;
		}
		json["format"] = GetName(inFiles.mFormat.mContainer);
		json["encoding"] = GetName(inFiles.mFormat.mSamples);
		json["dither"] = inFiles.mFormat.mDither == Dither::kTriangular ? "tpdf" : "none";
		json["layout"] = GetLayoutName(inLayout);
		json["rate"] = inSampleRate;
		json["firstSample"] = file.mRange.mFirstFrame;
		json["samples"] = file.mRange.mFrames;
		if (file.mTimeReference && inFiles.mFormat.mContainer == OutputContainer::kWav)
		{
			json["timeReference"] = *file.mTimeReference;
		}
		json["peak"] = file.mPeak;
		if (file.mLoudness)
		{
			AddLoudness(json, *file.mLoudness);
		}
		json["clippedSamples"] = file.mClippedSamples;
		json["limiterReductionDb"] = 0.0 - ToDecibels(file.mSmallestLimiterGain);
		list.push_back(std::move(json));
	}
	return list;
}

void AddMix(Json& ioJson, RenderSummary const& inFiles, OutputLevels const& inLevels)
{
	if (inFiles.mMix)
	{
		AddLoudness(ioJson["mix"], *inFiles.mMix);
	}
	if (inLevels.mNormalizeLoudness && !inFiles.mFiles.empty())
	{
		ioJson["normalizing"] = {{"targetLufs", *inLevels.mNormalizeLoudness},
			{"gainDb", ToDecibels(inFiles.mNormalizingGain)}, {"errorLu", inFiles.mLoudnessError}};
	}
}

std::string DescribeLimiting(RenderedFile const& inFile)
{
	return inFile.mSmallestLimiterGain < 1.0
			   ? ", limited by up to " + FormatDecibels(-ToDecibels(inFile.mSmallestLimiterGain), 1) + " dB"
			   : "";
}

std::string DescribeNormalizing(RenderSummary const& inFiles)
{
	return inFiles.mNormalizingGain != 1.0
			   ? "normalized by " + FormatDecibels(ToDecibels(inFiles.mNormalizingGain), 2) + " dB\n"
			   : "";
}

void WarnOfLevels(RenderSummary const& inFiles)
{
	for (RenderedFile const& file : inFiles.mFiles)
	{
		if (file.mClippedSamples > 0)
		{
			PrintWarning(std::to_string(file.mClippedSamples) +
						 (file.mClippedSamples == 1 ? " sample of " : " samples of ") +
						 QuotePath(file.mPath) + (file.mClippedSamples == 1 ? " was" : " were") +
						 " clipped at full scale (peak " + FormatPeak(file.mPeak) +
						 "); lower --gain-db, use --limit-dbtp -1, or write floats with --bits 32f");
		}
	}
	constexpr double kTolerance = 0.1;
	if (std::fabs(inFiles.mLoudnessError) > kTolerance)
	{
		std::array<char, 96> text{};
		std::snprintf(text.data(), text.size(),
			"the limiter keeps the loudness %.1f LU %s the --normalize target",
			std::fabs(inFiles.mLoudnessError), inFiles.mLoudnessError < 0.0 ? "below" : "above");
		PrintWarning(text.data());
	}
}

void WarnOfDamage(RenderSummary const& inFiles)
{
	for (DamagedMedia const& media : inFiles.mDamaged)
	{
		PrintWarning(QuoteInput(media.mPath) + " " + DescribeDamage(media));
	}
}

} // namespace SonaroCommand
