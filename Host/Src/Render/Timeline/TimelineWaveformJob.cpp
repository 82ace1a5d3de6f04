#include "SonaroHost/Render/TimelineWaveformJob.h"

#include "Picture/TimelineWaves.h"
#include "Render/Effect/LatencyGrowth.h"
#include "Render/RangeRender.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Files/OutputFile.h"
#include "SonaroHost/Files/OutputPlan.h"
#include "SonaroHost/Picture/TimelineDrawing.h"
#include "SonaroHost/Render/TimelineProgramme.h"
#include "Waveform/WaveformPicture.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <chrono>
#include <utility>

namespace SonaroHost
{

namespace
{

constexpr unsigned kTrackBlockFrames = 2048;

} // namespace

TimelineWaveformJob::TimelineWaveformJob(TimelineWaveformRequest inRequest)
	: mRequest(std::move(inRequest)),
	  mInput(mRequest.mInput, mRequest.mMediaFolders, mRequest.mText),
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

std::optional<TimelineWaveformSummary> TimelineWaveformJob::Run(
	ProgressCallback const& inProgress, std::stop_token const& inStop)
{
	auto const begin = std::chrono::steady_clock::now();
	OutputFile file(mRequest.mOutput);
	TimelinePicture picture = MakeTimelinePicture(mInput.GetTimeline(), mSequence);
	TimelineStyle const style{mRequest.mStyle, mRequest.mWidth, mRequest.mHeight};
	unsigned const height = ChoosePictureHeight(picture, style);
	bool const isPng = mRequest.mFormat == WaveformFormat::kPng;
	if (isPng)
	{
		CheckBitmapSize(mRequest.mWidth, height);
	}
	bool const isWhole =
		RunUntilLatenciesStay([&](bool inSearches) { return Hear(picture, inSearches, inProgress, inStop); });
	if (!isWhole)
	{
		return std::nullopt;
	}
	std::string const bytes = isPng ? DrawTimelinePng(picture, style) : DrawTimelineSvg(picture, style);
	file.Write(bytes.data(), static_cast<std::int64_t>(bytes.size()));
	if (inStop.stop_requested())
	{
		return std::nullopt;
	}
	file.Commit(mRequest.mReplace);
	TimelineWaveformSummary summary{mSequence.mFrames, mSequence.mSampleRate, height, {},
		std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count()};
	for (TimelinePicture::Lane const& lane : picture.mLanes)
	{
		summary.mBands.push_back(
			lane.mWhySilent.empty() ? lane.mPath : lane.mPath + " (not heard: " + lane.mWhySilent + ")");
	}
	return summary;
}

bool TimelineWaveformJob::Hear(TimelinePicture& ioPicture, bool inSearchesLatency,
	ProgressCallback const& inProgress, std::stop_token const& inStop)
{
	Programme programme = Otio::MakeProgramme(mSequence, mInput.GetMedia());
	programme.mSearchesLatency = inSearchesLatency;
	TimelineWaves waves(ioPicture, programme.mFrames, programme.mSampleRate, mRequest.mWidth);
	RangeRender render;
	render.mView.mTaps = waves.GetTaps();
	render.mRange = {0, programme.mFrames};
	render.mBlockFrames = kTrackBlockFrames;
	render.mStop = inStop;
	render.mSink = [&, done = std::int64_t{0}](dsp::AudioBuffer& ioBlock) mutable
	{
		waves.AddMix(ioBlock, done);
		done += ioBlock.GetUseSize();
		if (inProgress)
		{
			inProgress({done, programme.mFrames});
		}
	};
	bool const isWhole = RenderRange(programme, render).has_value();
	waves.Fill(ioPicture);
	return isWhole;
}

} // namespace SonaroHost
