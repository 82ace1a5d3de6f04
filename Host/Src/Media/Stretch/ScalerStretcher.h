#pragma once

#include "Sonaro/IAudioTimeScaler.h"
#include "TimeStretcher.h"
#include "zorvaudiodsp/AudioBufferShell.h"

#include <memory>
#include <vector>

namespace SonaroHost
{

// The engine's time scaler.
//
// Ratio     That of two whole hops, the longer of which has 512 samples, so that it is within half a sample of the shorter
//           one of what was asked for: 0.1 % at ratios of 1 and more, 0.2 % at a half.
// Level     The scaler cuts off at full scale. It works a quarter as loud, which changes nothing else.
// Channels  Any number: there is a scaler for each 32 of them.
class ScalerStretcher final : public TimeStretcher
{
public:
	ScalerStretcher(Ratio const& inRatio, unsigned inChannels, int inSampleRate);

	Ratio GetRatio() const override { return mRatio; }
	unsigned GetLargestInput() const override { return kBlockFrames; }
	unsigned GetLargestOutput() const override { return mLargestOutput; }
	unsigned GetInputNeeded() const override { return kBlockFrames; }
	unsigned Process(dsp::AudioBuffer& ioInput, dsp::AudioBuffer& outOutput) override;

private:
	static constexpr unsigned kBlockFrames = 1024;

	// A scaler and its part of the channels.
	struct Part
	{
		SN::InterfaceRef<SN::IAudioTimeScaler> mScaler;
		unsigned mFirstChannel = 0;
		dsp::AudioBufferShell mInput;
		dsp::AudioBufferShell mOutput;
	};

	std::vector<std::unique_ptr<Part>> mParts;
	Ratio mRatio;
	unsigned mLargestOutput = 0;
};

} // namespace SonaroHost
