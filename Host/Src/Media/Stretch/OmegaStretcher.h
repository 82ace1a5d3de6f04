#pragma once

#include "TimeStretcher.h"
#include "zorvaudiodsp/stretch/omega/OmegaEngine.h"

#include <memory>

namespace SonaroHost
{

// The engine's stretching in the time domain, or the Rubber Band Library in its place.
//
// Ratio  What was asked for, to the bits of a float.
class OmegaStretcher final : public TimeStretcher
{
public:
	OmegaStretcher(dsp::stretch::omega::OmegaEngineKind inKind, Ratio const& inRatio, unsigned inChannels,
		int inSampleRate);

	Ratio GetRatio() const override { return mRatio; }
	unsigned GetLargestInput() const override;
	unsigned GetLargestOutput() const override { return kBlockFrames; }
	unsigned GetInputNeeded() const override;
	unsigned Process(dsp::AudioBuffer& ioInput, dsp::AudioBuffer& outOutput) override;

private:
	static constexpr unsigned kBlockFrames = 1024;

	struct Destroyer
	{
		void operator()(dsp::stretch::omega::OmegaEngine* inEngine) const
		{
			dsp::stretch::omega::OmegaEngine::Destroy(inEngine);
		}
	};

	// What the next block gives.
	unsigned GetOutput() const;

	std::unique_ptr<dsp::stretch::omega::OmegaEngine, Destroyer> mEngine;
	Ratio mRatio;
	float mRoundedRatio = 1.0f;
};

} // namespace SonaroHost
