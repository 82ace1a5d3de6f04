#include "ScalerStretcher.h"

#include "Sonaro/IAudioTimeScalerFactory.h"
#include "SonaroHost/Base/HostError.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace SonaroHost
{

namespace
{

constexpr unsigned kChannelsOfScaler = 32;
constexpr unsigned kFrameSize = 2048;
// A window of two frames.
constexpr unsigned kWindowMode = 1;
constexpr int kLongerHop = 512;

// A power of two, so that no bit is lost.
constexpr float kWorkingLevel = 0.25f;

// The fraction of two hops that was rounded to a number. No two of them are as close.
Ratio FindHops(double inRatio)
{
	for (int analysisHop = 1; analysisHop <= kLongerHop; ++analysisHop)
	{
		std::int64_t const synthesisHop = std::llround(inRatio * analysisHop);
		float const quotient = static_cast<float>(synthesisHop) / static_cast<float>(analysisHop);
		if (quotient == static_cast<float>(inRatio))
		{
			return {synthesisHop, analysisHop};
		}
	}
	return Ratio::FromDouble(inRatio);
}

void Scale(dsp::AudioBuffer& ioBuffer, unsigned inFrames, float inFactor)
{
	for (unsigned channel = 0; channel < ioBuffer.GetNumChannels(); ++channel)
	{
		float* const samples = ioBuffer.GetChannel(channel);
		std::for_each(samples, samples + inFrames, [inFactor](float& ioSample) { ioSample *= inFactor; });
	}
}

} // namespace

ScalerStretcher::ScalerStretcher(Ratio const& inRatio, unsigned inChannels, int inSampleRate)
{
	for (unsigned first = 0; first < inChannels; first += kChannelsOfScaler)
	{
		unsigned const channels = std::min(kChannelsOfScaler, inChannels - first);
		auto part = std::make_unique<Part>();
		part->mScaler = SN::GetAudioTimeScalerFactory()->CreateAudioTimeScaler(SN::RenderQuality::kHigh);
		part->mFirstChannel = first;
		part->mInput.Init(channels);
		part->mOutput.Init(channels);
		part->mScaler->Init(inRatio.ToDouble(), SN::FrameRate::FromSamplesPerSecond(inSampleRate), channels,
			1.0, kFrameSize, kWindowMode);
		if (part->mScaler->GetRatio() == 0.0)
		{
			Refuse("there is not enough memory to stretch the sound");
		}
		mParts.push_back(std::move(part));
	}
	mRatio = FindHops(mParts.front()->mScaler->GetRatio());
	// What a block leads to, and the hop on either side of it that it may complete.
	mLargestOutput = static_cast<unsigned>((mRatio * Ratio(kBlockFrames)).Round()) + 2 * (kLongerHop + 1);
}

unsigned ScalerStretcher::Process(dsp::AudioBuffer& ioInput, dsp::AudioBuffer& outOutput)
{
	Scale(ioInput, kBlockFrames, kWorkingLevel);
	unsigned count = 0;
	for (auto const& part : mParts)
	{
		part->mInput.Assign(ioInput.GetChannels() + part->mFirstChannel, kBlockFrames);
		part->mInput.ClearSilenceFlags(dsp::SilenceFlags::All());
		part->mOutput.Assign(outOutput.GetChannels() + part->mFirstChannel, mLargestOutput);
		count = part->mScaler->Process(part->mInput, part->mOutput, kBlockFrames, mLargestOutput);
	}
	Scale(outOutput, count, 1.0f / kWorkingLevel);
	return count;
}

} // namespace SonaroHost
