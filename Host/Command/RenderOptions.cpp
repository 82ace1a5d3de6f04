#include "RenderOptions.h"

#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Files/StandardStreams.h"
#include "TimeOption.h"

#include <cmath>

namespace SonaroCommand
{

using namespace SonaroHost;

namespace
{

// More than any recording needs in either direction.
constexpr double kLargestGainDecibels = 200.0;

} // namespace

OutputContainer RenderOptions::ChooseContainer() const
{
	if (mFormat.empty() && IsStandardStream(mOutput))
	{
		return OutputContainer::eWav;
	}
	auto const container = mFormat.empty() ? FindContainerByEnding(mOutput) : FindContainer(mFormat);
	if (!container)
	{
		Refuse("the ending of " + QuotePath(mOutput) +
			   " names no output format; end it in .wav, .aiff, .flac or .caf, or give --format");
	}
	return *container;
}

std::optional<OutputSamples> RenderOptions::GetSamples() const
{
	if (mBits.empty())
	{
		return std::nullopt;
	}
	return mBits == "16"   ? OutputSamples::eInteger16
		   : mBits == "24" ? OutputSamples::eInteger24
						   : OutputSamples::eFloat32;
}

std::optional<Dither> RenderOptions::GetDither() const
{
	if (mDither.empty())
	{
		return std::nullopt;
	}
	return mDither == "tpdf" ? Dither::eTriangular : Dither::eNone;
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
			   "' is no layout; give mono, stereo, 5.1 or a number of channels from 1 to " +
			   std::to_string(kMaxChannels));
	}
	return layout;
}

float RenderOptions::GetGain() const
{
	// Written so that what is not a number fails it.
	if (!(std::abs(mGainDecibels) <= kLargestGainDecibels))
	{
		Refuse("--gain-db: give decibels from -200 to 200");
	}
	return mGainDecibels == 0.0 ? 1.0f : static_cast<float>(std::pow(10.0, mGainDecibels / 20.0));
}

std::optional<TimePosition> RenderOptions::ParseFadeIn() const
{
	return mFadeIn.empty() ? std::nullopt : std::optional(ParseTime("--fade-in", mFadeIn));
}

std::optional<TimePosition> RenderOptions::ParseFadeOut() const
{
	return mFadeOut.empty() ? std::nullopt : std::optional(ParseTime("--fade-out", mFadeOut));
}

Measuring RenderOptions::GetMeasuring() const
{
	return !mReport.empty()       ? Measuring::eTracks
		   : mAsJson || !mIsQuiet ? Measuring::eOutput
								  : Measuring::eNothing;
}

} // namespace SonaroCommand
