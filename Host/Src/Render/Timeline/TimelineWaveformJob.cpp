#include "SonaroHost/Render/TimelineWaveformJob.h"

#include "Render/RangeRender.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Files/OutputFile.h"
#include "SonaroHost/Files/OutputPlan.h"
#include "SonaroHost/Render/TimelineProgramme.h"
#include "Waveform/WaveformBand.h"
#include "Waveform/WaveformPicture.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace SonaroHost
{

namespace
{

constexpr unsigned kBandHeight = 80;
constexpr unsigned kTrackBlockFrames = 2048;

// The bands of one picture while they are filled.
class Bands
{
public:
	Bands() { Add("the mix"); }

	SN::InterfaceRef<WaveformBand> Add(std::string const& inName)
	{
		mNames.push_back(inName);
		return mBands.emplace_back(zorvcore::classref::MakeObject<WaveformBand>());
	}

	void SetGrid(WaveformBand::Grid const& inGrid)
	{
		for (SN::InterfaceRef<WaveformBand> const& band : mBands)
		{
			band->SetGrid(inGrid);
		}
	}

	WaveformBand& GetMix() const { return *mBands.front(); }
	std::vector<std::string> const& GetNames() const { return mNames; }

	Waveform Take(WaveformBand::Grid const& inGrid, int inSampleRate) const
	{
		Waveform waveform{inSampleRate, inGrid.mFramesPerColumn, {}};
		for (SN::InterfaceRef<WaveformBand> const& band : mBands)
		{
			waveform.mChannels.push_back(band->GetValues());
		}
		return waveform;
	}

private:
	std::vector<std::string> mNames;
	std::vector<SN::InterfaceRef<WaveformBand>> mBands;
};

} // namespace

TimelineWaveformJob::TimelineWaveformJob(TimelineWaveformRequest inRequest)
	: mRequest(std::move(inRequest)),
	  mInput(mRequest.mInput, mRequest.mMediaFolders),
	  mSequence(mInput.MakeSequence(mRequest.mOptions))
{
	OutputPlan{{mRequest.mOutput}, {}, {mRequest.mInput}, mInput.ListMedia(), mRequest.mReplace}.Check();
	if (!IsPicture(mRequest.mFormat))
	{
		Refuse("the waveform of a timeline can only be a picture; write .png or .svg");
	}
	if (mRequest.mWidth < 1 || mRequest.mWidth > kMaxPictureSize)
	{
		Refuse("a picture must be 1 to " + std::to_string(kMaxPictureSize) + " pixels wide");
	}
	if (mRequest.mFormat == WaveformFormat::kPng)
	{
		CheckBitmapSize(mRequest.mWidth, mRequest.mHeight.value_or(1));
	}
	Otio::CheckHasSound(mSequence);
}

unsigned TimelineWaveformJob::ChooseHeight(unsigned inBands) const
{
	unsigned const height = mRequest.mHeight.value_or(std::min(kBandHeight * inBands, kMaxPictureSize));
	if (height < inBands || height > kMaxPictureSize)
	{
		Refuse("a picture of " + std::to_string(inBands) + " bands must be " + std::to_string(inBands) +
			   " to " + std::to_string(kMaxPictureSize) + " pixels high, not " + std::to_string(height));
	}
	if (mRequest.mFormat == WaveformFormat::kPng)
	{
		CheckBitmapSize(mRequest.mWidth, height);
	}
	return height;
}

std::optional<TimelineWaveformSummary> TimelineWaveformJob::Run(
	ProgressCallback const& inProgress, std::stop_token const& inStop)
{
	auto const begin = std::chrono::steady_clock::now();
	OutputFile file(mRequest.mOutput);
	Bands bands;
	RangeRender render;
	for (Otio::TrackRow const& row : mSequence.mTracks)
	{
		if (row.mDepth == 0 && row.mIsMeasured)
		{
			render.mView.mTaps.emplace(row.mPlace, bands.Add(row.mTrack));
		}
	}
	WaveformStyle style = mRequest.mStyle;
	style.mHeight = ChooseHeight(static_cast<unsigned>(bands.GetNames().size()));
	Programme const programme = Otio::MakeProgramme(mSequence, mInput.GetMedia());
	WaveformBand::Grid const grid{programme.mFirstFrame, programme.mFrames,
		std::max<std::int64_t>(1, programme.mFrames / (mRequest.mWidth * kColumnsPerPixel)),
		programme.GetFrameRate()};
	bands.SetGrid(grid);
	render.mRange = {0, programme.mFrames};
	render.mBlockFrames = kTrackBlockFrames;
	render.mStop = inStop;
	render.mSink = [&, done = std::int64_t{0}](dsp::AudioBuffer& ioBlock) mutable
	{
		bands.GetMix().Add(ioBlock, programme.mFirstFrame + done);
		done += ioBlock.GetUseSize();
		if (inProgress)
		{
			inProgress({done, programme.mFrames});
		}
	};
	if (!RenderRange(programme, render))
	{
		return std::nullopt;
	}
	auto* const write = mRequest.mFormat == WaveformFormat::kPng ? &WriteWaveformPng : &WriteWaveformSvg;
	write(bands.Take(grid, programme.mSampleRate), style, mRequest.mWidth, file);
	if (inStop.stop_requested())
	{
		return std::nullopt;
	}
	file.Commit();
	return TimelineWaveformSummary{programme.mFrames, programme.mSampleRate, style.mHeight, bands.GetNames(),
		std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count()};
}

} // namespace SonaroHost
