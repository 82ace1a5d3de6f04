#include "SonaroHost/Render/WaveformJob.h"

#include "Media/Stretch/StretchedInfo.h"
#include "Render/StretchChoice.h"
#include "Sonaro/AudioWaveformQueue.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/NumberText.h"
#include "SonaroHost/Engine/EngineFactory.h"
#include "SonaroHost/Engine/RenderContextScope.h"
#include "SonaroHost/Files/OutputFile.h"
#include "SonaroHost/Files/OutputPlan.h"
#include "SonaroHost/Media/AudioFileInspection.h"
#include "SonaroHost/Render/JobChecks.h"
#include "SonaroHost/Waveform/PeakWaveformGenerator.h"
#include "Waveform/WaveformData.h"
#include "Waveform/WaveformPicture.h"
#include "zorvcore/threads/AsyncThreadedExecutor.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <future>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace SonaroHost
{

namespace
{

constexpr std::int64_t kDefaultWidth = 1200;
constexpr std::int64_t kDefaultSamplesPerColumn = 256;
constexpr unsigned kFileBlockFrames = 8192;
constexpr auto kProgressInterval = std::chrono::milliseconds(50);

std::int64_t DivideUp(std::int64_t inDividend, std::int64_t inDivisor)
{
	return inDividend / inDivisor + (inDividend % inDivisor != 0 ? 1 : 0);
}

// Ends the computation when nobody wants it any more, and waits for that: it uses what its caller holds.
class CancelAtEnd
{
public:
	CancelAtEnd(SN::IAudioWaveformBuffer& ioBuffer, std::future<int> const& inComputing)
		: mBuffer(ioBuffer),
		  mComputing(inComputing)
	{
	}
	~CancelAtEnd()
	{
		mBuffer.Cancel();
		mComputing.wait();
	}
	CancelAtEnd(CancelAtEnd const&) = delete;
	CancelAtEnd& operator=(CancelAtEnd const&) = delete;

private:
	SN::IAudioWaveformBuffer& mBuffer;
	std::future<int> const& mComputing;
};

// Runs a task on the waveform thread.
std::future<int> QueueWaveform(std::function<int()> inTask)
{
	auto const task = std::make_shared<std::packaged_task<int()>>(std::move(inTask));
	// A queue that is cleared in between refuses; the next one is new.
	while (!SN::AudioWaveformQueue::GetQueue()->Queue([task] { (*task)(); }))
	{
	}
	return task->get_future();
}

} // namespace

WaveformJob::WaveformJob(WaveformRequest inRequest)
	: mRequest(std::move(inRequest))
{
	Open();
	OutputPlan{{mRequest.mOutput}, {}, {mRequest.mInput}, {}, mRequest.mReplace}.Check();
	ChooseColumns();
	if (mRequest.mBits != 8 && mRequest.mBits != 16)
	{
		Refuse("values of " + std::to_string(mRequest.mBits) + " bits are not supported; use 8 or 16");
	}
	WaveformStyle const& style = mRequest.mStyle;
	unsigned const bands =
		mRequest.mChannels == WaveformChannels::kMerged ? 1 : GetInputInfo().GetNumChannels();
	if (IsPicture(mRequest.mFormat) && (style.mHeight < bands || style.mHeight > kMaxPictureSize))
	{
		Refuse("a picture of " + std::to_string(bands) + (bands == 1 ? " band" : " channels") + " must be " +
			   std::to_string(bands) + " to " + std::to_string(kMaxPictureSize) + " pixels high, not " +
			   std::to_string(style.mHeight));
	}
	if (mRequest.mFormat == WaveformFormat::kPng)
	{
		CheckBitmapSize(mColumns, style.mHeight);
	}
	// Written so that what is not a number fails it.
	if (!(style.mFloorDecibels < 0.0 && style.mFloorDecibels >= -1000.0))
	{
		Refuse("a floor of " + FormatNumber(style.mFloorDecibels) +
			   " dB is out of range; use -1000 up to a value below 0");
	}
}

void WaveformJob::Open()
{
	auto stretch =
		ChooseStretch(mRequest.mSpeed, mRequest.mKeepsPitch, mRequest.mSemitones, mRequest.mStretchEngine);
	if (!stretch && mRequest.mSpeed != 1.0)
	{
		// Conversion alone: at a ratio of 1, this engine passes on what it gets.
		stretch.emplace();
		stretch->mSpeed = stretch->mPitch = Ratio::FromExactDouble(mRequest.mSpeed);
		stretch->mEngine = StretchEngine::kOmega;
	}
	AudioFileInfo const info = InspectAudioFile(mRequest.mInput, mRequest.mStream);
	FrameRange const range = ChooseRange(info, mRequest.mStart, mRequest.mDuration);
	mFirstFrame = range.mFirst;
	mFrames = range.mFrames;
	if (stretch)
	{
		mFirstFrame = stretch->CountFrames(range.mFirst);
		mFrames = stretch->CountFrames(range.mFirst + range.mFrames) - mFirstFrame;
	}
	if (mFrames < 1)
	{
		Refuse(
			QuotePath(info.mPath) + ": at this speed there is less than one sample to draw; use a lower one");
	}
	mSource = AudioFileSource::Open(stretch ? MakeStretched(info, *stretch) : info);
}

void WaveformJob::ChooseColumns()
{
	if (mRequest.mWidth && mRequest.mSamplesPerColumn)
	{
		Refuse("the width and the samples per column both set the scale; use only one of them");
	}
	if (mRequest.mWidth.value_or(1) < 1 || mRequest.mSamplesPerColumn.value_or(1) < 1)
	{
		Refuse("the width and the samples per column must be at least 1");
	}
	bool const isPicture = IsPicture(mRequest.mFormat);
	std::int64_t const most = isPicture ? kMaxPictureSize : kMaxWaveformColumns;
	std::int64_t& interval = mWaveform.mSamplesPerColumn;
	if (mRequest.mSamplesPerColumn || (!isPicture && !mRequest.mWidth))
	{
		interval = mRequest.mSamplesPerColumn.value_or(kDefaultSamplesPerColumn);
		mColumns = DivideUp(mFrames, interval);
	}
	else if (isPicture)
	{
		mColumns = mRequest.mWidth.value_or(kDefaultWidth);
		interval = std::max<std::int64_t>(1, mFrames / (std::min(mColumns, most) * kColumnsPerPixel));
	}
	else
	{
		interval = DivideUp(mFrames, *mRequest.mWidth);
		mColumns = DivideUp(mFrames, interval);
	}
	if (mColumns > most)
	{
		Refuse(std::string(isPicture ? "a picture is at most " : "data has at most ") + std::to_string(most) +
			   (isPicture ? " pixels wide, not " : " columns, not ") + std::to_string(mColumns) +
			   "; use more samples per column or a smaller width");
	}
	// What the field of the formats holds.
	if (!isPicture && interval > std::numeric_limits<std::int32_t>::max())
	{
		Refuse("a column of data has at most 2147483647 samples; use fewer");
	}
}

std::optional<WaveformSummary> WaveformJob::Run(
	ProgressCallback const& inProgress, std::stop_token const& inStop)
{
	auto const begin = std::chrono::steady_clock::now();
	OutputFile file(mRequest.mOutput);
	if (!Compute(inProgress, inStop))
	{
		return std::nullopt;
	}
	Write(file);
	file.CheckWritten();
	if (inProgress)
	{
		inProgress({mFrames, mFrames});
	}
	if (inStop.stop_requested())
	{
		return std::nullopt;
	}
	file.Commit(mRequest.mReplace);

	WaveformSummary summary;
	summary.mFrames = mFrames;
	summary.mSampleRate = GetInputInfo().mSampleRate;
	summary.mChannels = mWaveform.mChannels.size();
	summary.mColumns = mColumns;
	summary.mSamplesPerColumn = IsPicture(mRequest.mFormat) && !mRequest.mSamplesPerColumn
									? static_cast<double>(mFrames) / static_cast<double>(mColumns)
									: static_cast<double>(mWaveform.mSamplesPerColumn);
	summary.mElapsedSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
	return summary;
}

SN::InterfaceRef<SN::IAudioGenerator> WaveformJob::MakeStream(
	SN::InterfaceRef<SN::IAudioRenderContext> const& inContext) const
{
	return EngineFactory().CreateAudioStreamRenderer(
		{.mContext = inContext, .mFrameRate = mSource->GetFrameRate(), .mSource = mSource});
}

bool WaveformJob::Compute(ProgressCallback const& inProgress, std::stop_token const& inStop)
{
	SN::FrameRate const frameRate = mSource->GetFrameRate();
	SN::TickTime const start(mFirstFrame, frameRate);
	SN::TickTime const end(mFirstFrame + mFrames, frameRate);
	RenderContextScope const context(kFileBlockFrames, end, mSource->GetName());
	auto const generator = zorvcore::classref::MakeObject<PeakWaveformGenerator>(
		MakeStream(context.Get()), start, end, kFileBlockFrames);
	auto const buffer = SN::AudioWaveformQueue::CreateAudioWaveformBuffer();
	std::int64_t const interval = mWaveform.mSamplesPerColumn;
	auto computing = QueueWaveform(
		[&]
		{
			return generator->GenerateWaveform(
				start, end, static_cast<unsigned long long>(interval), buffer, false, false);
		});
	{
		CancelAtEnd const cancel(*buffer, computing);
		while (computing.wait_for(kProgressInterval) != std::future_status::ready &&
			   !inStop.stop_requested() && !mSource->GetFailure())
		{
			if (inProgress)
			{
				inProgress({std::min<std::int64_t>(buffer->GetSampleCount() * interval, mFrames), mFrames});
			}
		}
	}
	int const result = computing.get();
	if (auto const failure = mSource->GetFailure())
	{
		throw *failure;
	}
	if (inStop.stop_requested())
	{
		return false;
	}
	CheckEngineResult(result, "a waveform");
	mWaveform.mSampleRate = GetInputInfo().mSampleRate;
	mWaveform.mChannels = std::move(buffer->GetChannels());
	if (mRequest.mChannels == WaveformChannels::kMerged)
	{
		mWaveform = MergeChannels(mWaveform);
	}
	return true;
}

void WaveformJob::Write(OutputFile& ioFile) const
{
	auto const width = static_cast<unsigned>(mColumns);
	auto const write = [&ioFile](std::string_view inBytes)
	{ ioFile.Write(inBytes.data(), static_cast<std::int64_t>(inBytes.size())); };
	switch (mRequest.mFormat)
	{
	case WaveformFormat::kPng:
		WriteWaveformPng(mWaveform, mRequest.mStyle, width, ioFile);
		break;
	case WaveformFormat::kSvg:
		WriteWaveformSvg(mWaveform, mRequest.mStyle, width, ioFile);
		break;
	case WaveformFormat::kJson:
		WriteWaveformJson(mWaveform, mRequest.mBits, write);
		break;
	case WaveformFormat::kDat:
		WriteWaveformDat(mWaveform, mRequest.mBits, write);
		break;
	}
}

} // namespace SonaroHost
