#include "DenoisedDecoder.h"

#include "DenoisedInfo.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Engine/EngineFactory.h"
#include "zorvmediatypes/AudioChannelLayout.h"

#include <algorithm>
#include <utility>

namespace SonaroHost
{

namespace
{

constexpr unsigned kBlockFrames = 4096;

SN::FrameRate GetRate(AudioFileInfo const& inRecording)
{
	return SN::FrameRate::FromSamplesPerSecond(inRecording.mSampleRate);
}

} // namespace

// The process from a frame on.
class DenoisedDecoder::Run
{
public:
	Run(AudioFileInfo const& inRecording, InterleavedFile::Opener const& inOpen, std::int64_t inFirst)
		: mRecording(inRecording),
		  mFirst(inFirst),
		  mContext(kBlockFrames, GetTime(inRecording.mFrames), SN::ImmutableString("denoise")),
		  mFile(zorvcore::classref::MakeObject<InterleavedFile>(
			  inOpen, inRecording.mFrames, GetRate(inRecording))),
		  mProcessor(zorvcore::classref::MakeObject<DenoiseProcessor>(MakeSettings(inRecording, inFirst)))
	{
		EngineFactory const factory;
		mGenerator = factory.CreateOfflineAudioProcessorAudioGenerator({.mGenerator = mFile,
			.mInputPanner = factory.CreateNoneAudioPanProcessorRenderer(
				mContext.Get(), zorvmediatypes::CreateMonoChannelLayout()),
			.mOutputPanner = factory.CreateNoneAudioPanProcessorRenderer(mContext.Get(), inRecording.mLayout),
			.mFrameRate = GetRate(inRecording),
			.mStartTime = GetTime(inFirst),
			.mEndTime = GetTime(inRecording.mFrames),
			.mProcessor = mProcessor});
		mGenerator->Preroll(SN::kTimeZero, false);
	}

	// Returns how many of the frames there are.
	std::int64_t Read(std::int64_t inPosition, dsp::AudioBuffer& outBuffer)
	{
		mGenerator->GetAudioData(GetTime(inPosition - mFirst), outBuffer, false);
		if (auto const failure = mProcessor->GetFailure())
		{
			RethrowFor(mRecording, failure);
		}
		return std::clamp<std::int64_t>(mFile->GetFrames() - inPosition, 0, outBuffer.GetUseSize());
	}

private:
	SN::TickTime GetTime(std::int64_t inFrame) const { return {inFrame, GetRate(mRecording)}; }

	AudioFileInfo const& mRecording;
	std::int64_t mFirst;
	RenderContextScope mContext;
	SN::InterfaceRef<InterleavedFile> mFile;
	SN::InterfaceRef<DenoiseProcessor> mProcessor;
	SN::InterfaceRef<SN::IAudioGenerator> mGenerator;
};

DenoisedDecoder::DenoisedDecoder(AudioFileInfo const& inRecording, InterleavedFile::Opener inOpen)
	: mRecording(inRecording),
	  mOpen(std::move(inOpen)),
	  mIsSeekExact(mOpen()->IsSeekExact())
{
}

DenoisedDecoder::~DenoisedDecoder() = default;

std::int64_t DenoisedDecoder::Read(float* outSamples, std::int64_t inFrames)
{
	if (!mRun)
	{
		mRun = std::make_unique<Run>(mRecording, mOpen, mPosition);
		mOutput.Init(GetNumChannels(), kBlockFrames);
	}
	std::int64_t done = 0;
	std::size_t const channels = GetNumChannels();
	while (done < inFrames)
	{
		mOutput.SetUseSize(static_cast<unsigned>(std::min<std::int64_t>(kBlockFrames, inFrames - done)));
		std::int64_t const count = mRun->Read(mPosition, mOutput);
		for (std::size_t channel = 0; channel < channels; ++channel)
		{
			float const* const samples = mOutput.GetChannel(channel);
			for (std::int64_t i = 0; i < count; ++i)
			{
				outSamples[static_cast<std::size_t>(done + i) * channels + channel] = samples[i];
			}
		}
		mPosition += count;
		done += count;
		if (count < mOutput.GetUseSize())
		{
			break;
		}
	}
	return done;
}

bool DenoisedDecoder::SeekTo(std::int64_t inFrame)
{
	if (inFrame != mPosition)
	{
		mRun.reset();
		mPosition = inFrame;
	}
	return true;
}

} // namespace SonaroHost
