#include "TimelineWaves.h"

#include "SonaroHost/Waveform/WaveformStyle.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <algorithm>
#include <cmath>

namespace SonaroHost
{

namespace
{

// Fewer for each pixel where there are many lanes, which all stay in memory.
std::int64_t ChooseFramesPerColumn(std::int64_t inFrames, unsigned inWidth, std::size_t inLanes)
{
	constexpr std::int64_t kMostColumns = 1024;
	std::int64_t const columns =
		std::clamp<std::int64_t>(kMostColumns / static_cast<std::int64_t>(inLanes), 1, kColumnsPerPixel);
	return std::max<std::int64_t>(1, inFrames / (std::max(inWidth, 1u) * columns));
}

// A whole number that seconds blurred.
double Sharpen(double inFrame)
{
	constexpr double kBlur = 1.0e-4;
	return std::abs(inFrame - std::round(inFrame)) < kBlur ? std::round(inFrame) : inFrame;
}

} // namespace

TimelineWaves::TimelineWaves(
	TimelinePicture const& inPicture, std::int64_t inFrames, int inSampleRate, unsigned inWidth)
{
	WaveformBand::Grid grid;
	grid.mFrames = inFrames;
	grid.mFramesPerColumn = ChooseFramesPerColumn(inFrames, inWidth, inPicture.mLanes.size());
	grid.mFrameRate = SN::FrameRate::FromSamplesPerSecond(inSampleRate);
	for (TimelinePicture::Lane const& lane : inPicture.mLanes)
	{
		SN::InterfaceRef<WaveformBand>& band = mBands.emplace_back();
		bool const isMix = mBands.size() == 1;
		if (isMix || !lane.mOrigin.empty())
		{
			band = zorvcore::classref::MakeObject<WaveformBand>();
			grid.mFirstFrame = isMix ? 0.0 : Sharpen(lane.mClock.mStart * inSampleRate);
			grid.mStep = isMix ? 1.0 : lane.mClock.mFrameSeconds * inSampleRate;
			band->SetGrid(grid);
		}
		if (!isMix && band)
		{
			mTaps.emplace(lane.mOrigin, band);
		}
	}
}

void TimelineWaves::AddMix(dsp::AudioBuffer const& inBlock, std::int64_t inFirstFrame)
{
	mBands.front()->Add(inBlock, inFirstFrame);
}

void TimelineWaves::Fill(TimelinePicture& ioPicture) const
{
	for (std::size_t lane = 0; lane < mBands.size(); ++lane)
	{
		if (mBands[lane])
		{
			ioPicture.mLanes[lane].mColumns = mBands[lane]->GetValues();
		}
	}
}

} // namespace SonaroHost
