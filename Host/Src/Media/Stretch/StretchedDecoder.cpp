#include "StretchedDecoder.h"

#include <algorithm>
#include <utility>

namespace SonaroHost
{

StretchedDecoder::StretchedDecoder(AudioFileInfo const& inRecording, std::unique_ptr<SoundDecoder> inFile)
	: mStretch(*inRecording.mStretch),
	  mFileFrames(inRecording.mFileFrames),
	  mFrames(inRecording.mFrames),
	  mSampleRate(inRecording.mSampleRate),
	  mNumChannels(inFile->GetNumChannels()),
	  mDecoder(std::move(inFile))
{
	CheckIsBuiltIn(mStretch.mEngine);
}

StretchedDecoder::~StretchedDecoder() = default;

std::int64_t StretchedDecoder::Read(float* outSamples, std::int64_t inFrames)
{
	if (!mStretcher)
	{
		Start();
	}
	std::int64_t done = 0;
	while (done < inFrames)
	{
		if (mGiven == mReady)
		{
			Fill();
		}
		std::int64_t const count =
			std::min({inFrames - done, std::int64_t{mReady} - mGiven, FindEnd() - mPosition});
		if (count <= 0)
		{
			break;
		}
		for (unsigned channel = 0; channel < mNumChannels; ++channel)
		{
			float const* const samples = mOutput.GetChannel(channel) + mGiven;
			for (std::int64_t i = 0; i < count; ++i)
			{
				outSamples[(done + i) * mNumChannels + channel] = samples[i];
			}
		}
		mGiven += static_cast<unsigned>(count);
		mPosition += count;
		done += count;
	}
	return done;
}

void StretchedDecoder::Start()
{
	mStretcher =
		MakeTimeStretcher(mStretch.mEngine, mStretch.mPitch / mStretch.mSpeed, mNumChannels, mSampleRate);
	mFile = std::make_unique<ConvertedFile>(
		std::move(mDecoder), mFileFrames, mStretch.mStart, mStretch.mSpeed * mStretcher->GetRatio());
	mInput.Init(mNumChannels, mStretcher->GetLargestInput());
	mOutput.Init(mNumChannels, mStretcher->GetLargestOutput());
}

void StretchedDecoder::Fill()
{
	mGiven = 0;
	mReady = 0;
	while (mReady == 0 && mPosition < FindEnd())
	{
		mInput.SetUseSize(mStretcher->GetInputNeeded());
		mFile->Read(mInput);
		mReady = mStretcher->Process(mInput, mOutput);
	}
}

std::int64_t StretchedDecoder::FindEnd() const
{
	return std::min(mFrames, mStretch.CountFrames(mFile->GetFrames()));
}

} // namespace SonaroHost
