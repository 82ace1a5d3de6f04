#pragma once

#include "TimeStretcher.h"
#include "zorvaudiodsp/stretch/omega/OmegaEngine.h"

#include <memory>

namespace SonaroHost
{

// The engine's stretching by splices and a phase vocoder, or the Rubber Band Library in its place.
//
// Ratio  What was asked for, to the bits of a float. It can change before each block, within limits.
class OmegaStretcher final : public TimeStretcher
{
public:
	struct Limits
	{
		float mLowestRatio;
		float mHighestRatio;
		unsigned mBlockFrames;
	};

	OmegaStretcher(dsp::stretch::omega::OmegaEngineKind inKind, Ratio const& inRatio, unsigned inChannels,
		int inSampleRate);
	// At the lowest ratio, until another one is set.
	OmegaStretcher(dsp::stretch::omega::OmegaEngineKind inKind, Limits const& inLimits, unsigned inChannels,
		int inSampleRate);

	// From the next block on, for which it is rounded to what comes back.
	double SetRatio(double inRatio);
	// What the next block gives.
	unsigned GetOutput() const;

	Ratio GetRatio() const override;
	unsigned GetLargestInput() const override;
	unsigned GetLargestOutput() const override { return mLimits.mBlockFrames; }
	unsigned GetInputNeeded() const override;
	unsigned Process(dsp::AudioBuffer& ioInput, dsp::AudioBuffer& outOutput) override;

private:
	struct Destroyer
	{
		void operator()(dsp::stretch::omega::OmegaEngine* inEngine) const
		{
			dsp::stretch::omega::OmegaEngine::Destroy(inEngine);
		}
	};

	std::unique_ptr<dsp::stretch::omega::OmegaEngine, Destroyer> mEngine;
	Limits mLimits;
	float mRoundedRatio = 1.0f;
};

} // namespace SonaroHost
