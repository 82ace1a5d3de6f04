#include "RenderOptions.h"

#include "SharedOptions.h"
#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/NumberText.h"
#include "SonaroHost/Base/PrintableText.h"
#include "SonaroHost/Files/StandardStreams.h"

#include <cmath>

namespace SonaroCommand
{

using namespace SonaroHost;

namespace
{

// More than any recording needs in either direction.
constexpr double kLargestGainDecibels = 200.0;

std::optional<OutputSamples> FindSamples(std::string const& inBits)
{
	if (inBits.empty())
	{
		return std::nullopt;
	}
	return inBits == "16"   ? OutputSamples::kInteger16
		   : inBits == "24" ? OutputSamples::kInteger24
							: OutputSamples::kFloat32;
}

std::optional<Dither> FindDither(std::string const& inDither)
{
	if (inDither.empty())
	{
		return std::nullopt;
	}
	return inDither == "tpdf" ? Dither::kTriangular : Dither::kNone;
}

float ToGain(double inDecibels)
{
	// Written so that what is not a number fails it.
	if (!(std::abs(inDecibels) <= kLargestGainDecibels))
	{
		Refuse("--gain-db: " + FormatNumber(inDecibels) + " is out of range; use -200 to 200");
	}
	return inDecibels == 0.0 ? 1.0f : static_cast<float>(std::pow(10.0, inDecibels / 20.0));
}

} // namespace

OutputContainer RenderOptions::ChooseContainer() const
{
	if (mFormat.empty() && IsStandardStream(mOutput))
	{
		return OutputContainer::kWav;
	}
	auto const container = mFormat.empty() ? FindContainerByEnding(mOutput) : FindContainer(mFormat);
	if (!container)
	{
		Refuse("cannot choose a format from the name " + QuotePath(mOutput) +
			   "; end it in .wav, .aiff, .flac or .caf, or use --format");
	}
	return *container;
}

std::optional<SN::AudioChannelLayout> RenderOptions::ParseLayout() const
{
	if (mLayout.empty())
	{
		return std::nullopt;
	}
	auto const layout = SonaroHost::ParseLayout(mLayout);
	if (!layout)
	{
		Refuse("--layout: '" + mLayout +
			   "' is not a layout; use mono, stereo, 5.1, ambisonic1 or a number of channels from 1 to " +
			   std::to_string(kMaxChannels) + ", for 7.1 with --binaural 8");
	}
	return layout;
}

Sequence::Resampling RenderOptions::ChooseResampling() const
{
	return mResampling == "draft"    ? Sequence::Resampling::kDraft
		   : mResampling == "engine" ? Sequence::Resampling::kEngine
									 : Sequence::Resampling::kExact;
}

bool RenderOptions::WantsPage() const
{
	std::string const ending = GetLowerEnding(mReport);
	return ending == ".html" || ending == ".htm";
}

void RenderOptions::Fill(OutputRequest& outRequest) const
{
	outRequest.mOutput = mOutput;
	if (!mReport.empty())
	{
		outRequest.mOtherOutputs.emplace_back(mReport);
	}
	outRequest.mReplace = !mKeepsOldFile;
	outRequest.mSamples = FindSamples(mBits);
	outRequest.mDither = FindDither(mDither);
	outRequest.mGain = ToGain(mGainDecibels);
	outRequest.mFadeIn = ParseTimeIfGiven("--fade-in", mFadeIn);
	outRequest.mFadeOut = ParseTimeIfGiven("--fade-out", mFadeOut);
	if (!mTail.empty())
	{
		outRequest.mTail = {mTail == "auto" ? std::nullopt : ParseTimeIfGiven("--tail", mTail)};
	}
	outRequest.mLevels = mLevels;
	outRequest.mMeasuring = !mReport.empty()       ? Measuring::kTracks
							: mAsJson || !mIsQuiet ? Measuring::kOutput
												   : Measuring::kNothing;
	outRequest.mKeepsSeries = WantsPage();
	outRequest.mJobs = mJobs.value_or(outRequest.mJobs);
	outRequest.mRefusesDamage = IsStrictInAll();
	outRequest.mBlockFrames = mBlockFrames.value_or(outRequest.mBlockFrames);
}

} // namespace SonaroCommand
