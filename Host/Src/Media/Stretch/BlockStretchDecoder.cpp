#include "BlockStretchDecoder.h"

#include <algorithm>
#include <utility>

namespace SonaroHost
{

BlockStretchDecoder::BlockStretchDecoder(
	AudioFileInfo const& inRecording, std::unique_ptr<SoundDecoder> inFile)
	: mRecording(inRecording),
	  mNumChannels(inFile->GetNumChannels()),
	  mDecoder(std::move(inFile))
{
	CheckIsBuiltIn(inRecording.mStretch->mEngine);
}

BlockStretchDecoder::~BlockStretchDecoder() = default;

std::int64_t BlockStretchDecoder::Read(float* outSamples, std::int64_t inFrames)
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
		std::int64_t const count = Give(outSamples + done * mNumChannels, inFrames - done);
		if (count == 0)
		{
			break;
		}
		done += count;
	}
	return done;
}

void BlockStretchDecoder::Start()
{
	mStretcher = MakeStretcher();
	mFile = std::make_unique<ConvertedFile>(
		std::move(mDecoder), mRecording.mFileFrames, mRecording.mStretch->mStart, GetConversion(*mStretcher));
	mInput.Init(mNumChannels, mStretcher->GetLargestInput());
	mOutput.Init(mNumChannels, mStretcher->GetLargestOutput());
}

void BlockStretchDecoder::Fill()
{
	mGiven = 0;
	mReady = 0;
	while (mReady == 0 && mPosition < FindEnd(mFile->GetFrames()))
	{
		PrepareBlock();
		mInput.SetUseSize(mStretcher->GetInputNeeded());
		mFile->Read(mInput);
		mReady = mStretcher->Process(mInput, mOutput);
	}
}

std::int64_t BlockStretchDecoder::Give(float* outSamples, std::int64_t inFrames)
{
	std::int64_t const left = std::max<std::int64_t>(0, FindEnd(mFile->GetFrames()) - mPosition);
	std::int64_t const count = std::min({inFrames, std::int64_t{mReady} - mGiven, left});
	for (unsigned channel = 0; channel < mNumChannels; ++channel)
	{
		float const* const samples = mOutput.GetChannel(channel) + mGiven;
		for (std::int64_t i = 0; i < count; ++i)
		{
			outSamples[i * mNumChannels + channel] = samples[i];
		}
	}
	mGiven += static_cast<unsigned>(count);
	mPosition += count;
	return count;
}

} // namespace SonaroHost
