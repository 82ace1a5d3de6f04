#include "RenderedFileRows.h"

#include "Levels.h"
#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/NumberText.h"
#include "SonaroHost/Base/PrintableText.h"
#include "SonaroHost/Base/TimePosition.h"
#include "SonaroHost/Files/StandardStreams.h"
#include "Terminal/Console.h"
#include "TimelineRows.h"

#include <cmath>
#include <utility>

namespace SonaroCommand
{

using namespace SonaroHost;

Json ListFiles(RenderSummary const& inFiles, SN::AudioChannelLayout const& inLayout, int inSampleRate)
{
	Json list = Json::array();
	for (RenderedFile const& file : inFiles.mFiles)
	{
		Json json{{"path", file.mPath.string()}};
		if (!file.mName.empty())
		{
			json["name"] = file.mName;
		}
		json.update(Json{{"format", GetName(inFiles.mFormat.mContainer)},
			{"encoding", GetName(inFiles.mFormat.mSamples)},
			{"dither", inFiles.mFormat.mDither == Dither::kTriangular ? "tpdf" : "none"},
			{"layout", GetLayoutName(inLayout)}, {"rate", inSampleRate},
			{"firstSample", file.mRange.mFirstFrame}, {"samples", file.mRange.mFrames}});
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

std::string DescribeFormat(std::string const& inShown, RenderedFile const& inFile,
	RenderSummary const& inFiles, SN::AudioChannelLayout const& inLayout)
{
	return inShown + ": " + FormatTime(inFile.mRange.mFrames, inFiles.mSampleRate) + " (" +
		   std::to_string(inFile.mRange.mFrames) + " samples), " + GetLayoutName(inLayout) + ", " +
		   std::to_string(inFiles.mSampleRate) + " Hz, " + GetName(inFiles.mFormat.mSamples) + " " +
		   GetName(inFiles.mFormat.mContainer) +
		   (inFiles.mFormat.mDither == Dither::kTriangular ? ", dithered\n" : "\n");
}

std::string DescribeBinaural(std::optional<Sequence::BinauralOutput> const& inBinaural)
{
	if (!inBinaural)
	{
		return {};
	}
	Listener const& listener = inBinaural->mListener;
	HeadAngles const head = listener.GetAngles();
	auto const turned = [](char const* inAxis, float inAngle)
	{
		return inAngle == 0.0f ? std::string()
							   : ", " + std::string(inAxis) + " " +
									 FormatNumber(static_cast<double>(inAngle)) + " degrees";
	};
	return "heard from " + GetLayoutName(inBinaural->mLayout) + " with two ears" +
		   (listener.mEars ? " of " + QuoteName(listener.mEars->GetName()) : "") + turned("yaw", head.mYaw) +
		   turned("pitch", head.mPitch) + turned("roll", head.mRoll) + "\n";
}

void AddBinaural(Json& ioJson, std::optional<Sequence::BinauralOutput> const& inBinaural)
{
	if (inBinaural)
	{
		Listener const& listener = inBinaural->mListener;
		HeadAngles const head = listener.GetAngles();
		ioJson["binaural"] = {{"layout", GetLayoutName(inBinaural->mLayout)},
			{"listener", listener.mEars ? Json(listener.mEars->GetName()) : Json()}, {"yaw", head.mYaw},
			{"headPitch", head.mPitch}, {"roll", head.mRoll}};
	}
}

std::string DescribePeak(RenderedFile const& inFile)
{
	std::string text = "peak " + FormatPeak(inFile.mPeak);
	if (inFile.mLoudness)
	{
		text += ", true peak " + FormatFixed(ToDecibels(inFile.mLoudness->mTruePeak), 2) +
				" dBTP, loudness " + FormatFixed(inFile.mLoudness->mIntegrated, 1) + " LUFS";
	}
	if (inFile.mSmallestLimiterGain < 1.0)
	{
		text += ", limited by up to " + FormatFixed(-ToDecibels(inFile.mSmallestLimiterGain), 1) + " dB";
	}
	return text + "\n";
}

void AddOneRun(Json& ioJson, RenderSummary const& inFiles)
{
	if (!inFiles.mGraph.mWhyInOneRun.empty())
	{
		ioJson["renderedInOneRun"] = inFiles.mGraph.mWhyInOneRun;
	}
}

std::string DescribeOneRun(RenderSummary const& inFiles)
{
	// Who has not waited does not ask why it took so long.
	constexpr double kLongSeconds = 5.0;
	std::string const& why = inFiles.mGraph.mWhyInOneRun;
	return why.empty() || inFiles.mElapsedSeconds < kLongSeconds
			   ? ""
			   : "rendered in one run: " + MakePrintable(why) + "\n";
}

std::string DescribeNormalizing(RenderSummary const& inFiles)
{
	return inFiles.mNormalizingGain != 1.0
			   ? "normalized by " + FormatFixed(ToDecibels(inFiles.mNormalizingGain), 2) + " dB\n"
			   : "";
}

void WarnOfLevels(RenderSummary const& inFiles)
{
	for (RenderedFile const& file : inFiles.mFiles)
	{
		if (file.mClippedSamples > 0)
		{
			PrintWarning(FormatCount(file.mClippedSamples, "sample") + " of " + QuotePath(file.mPath) +
						 (file.mClippedSamples == 1 ? " was" : " were") + " clipped at full scale (peak " +
						 FormatPeak(file.mPeak) +
						 "); lower --gain-db, use --limit-dbtp -1, or write floats with --bits 32f");
		}
		WarnOfLeftOut(QuotePath(file.mPath), file.mLoudness);
		if (!file.mLoudness && file.mImplausibleSamples > 0)
		{
			PrintWarning(FormatCount(file.mImplausibleSamples, "sample") + " of " + QuotePath(file.mPath) +
						 (file.mImplausibleSamples == 1 ? " is" : " are") +
						 " infinite, not a number or above +240 dBFS");
		}
	}
	constexpr double kTolerance = 0.1;
	if (std::fabs(inFiles.mLoudnessError) > kTolerance)
	{
		PrintWarning("the limiter keeps the loudness " + FormatFixed(std::fabs(inFiles.mLoudnessError), 1) +
					 " LU " + (inFiles.mLoudnessError < 0.0 ? "below" : "above") + " the --normalize target");
	}
}

std::string DescribeLearnedNoise(RenderSummary const& inFiles)
{
	std::string text;
	for (LearnedNoise const& noise : inFiles.mLearnedNoise)
	{
		if (noise.mLevel)
		{
			auto const format = [&](std::int64_t inFrame) { return FormatTime(inFrame, noise.mSampleRate); };
			auto const& learn = noise.mDenoise.mLearn;
			text +=
				"noise of " + FormatFixed(ToDecibels(*noise.mLevel), 1) + " dBFS in " +
				QuoteInput(noise.mPath) + " reduced by " + FormatNumber(noise.mDenoise.mReduction) +
				" dB, learned from " +
				(learn ? format(learn->mFirst) + " to " + format(learn->mEnd) : "its quietest stretches") +
				"\n";
		}
	}
	return text;
}

void WarnOfUnlearnedNoise(RenderSummary const& inFiles)
{
	for (LearnedNoise const& noise : inFiles.mLearnedNoise)
	{
		if (!noise.mLevel)
		{
			PrintWarning("no noise could be learned of " + QuoteInput(noise.mPath) +
						 ", as it is silent or shorter than " +
						 FormatCount(GetShortestLearnSpan(noise.mSampleRate), "sample") +
						 "; it stays as it is");
		}
	}
}

void WarnOfDamage(RenderSummary const& inFiles)
{
	for (DamagedMedia const& media : inFiles.mDamaged)
	{
		PrintWarning(QuoteInput(media.mPath) + " " + DescribeDamage(media));
	}
}

void WarnOfLeftOut(std::string const& inQuoted, std::optional<LoudnessReading> const& inReading)
{
	if (inReading && inReading->mLeftOutSamples > 0)
	{
		PrintWarning("the loudness of " + inQuoted + " leaves out " +
					 FormatCount(inReading->mLeftOutSamples, "sample") +
					 " (infinite, not a number or above +240 dBFS)");
	}
}

} // namespace SonaroCommand
