#pragma once

#include "Sonaro/IAudioTimeScaler.h"
#include "Time/Scaler/ChannelState.h"

#include <array>
#include <memory>

namespace SN
{

class ScalerFrame;
struct ScalerSettings;

// A phase vocoder. The spectrum of each hop of the input gives its tones as bins with magnitudes and frequencies, from
// the phases of two frames; a hop of the output of another length is made of the same tones. As that changes levels, a
// gain follows the energy of the input.
class AudioTimeScaler final : public Implements<AudioTimeScaler, IAudioTimeScaler>
{
public:
	AudioTimeScaler();
	~AudioTimeScaler() override;

	void Init(double inRatio, FrameRate const& inFrameRate, unsigned inNumChannels, double inPitchFactor,
		unsigned inFFTSize, unsigned inWindowMode) override;
	void Reset() override;
	unsigned GetOutputSampleCount(unsigned inNumInput) SONARO_NONBLOCKING override;
	unsigned GetInputSampleCount(unsigned inNumOutput) SONARO_NONBLOCKING override;
	unsigned GetMaxInputSampleCount(unsigned inNumOutput, double inRatio) SONARO_NONBLOCKING override;
	unsigned GetNumChannels() SONARO_NONBLOCKING override { return mNumChannels; }
	unsigned Process(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput, unsigned inNumInput,
		unsigned inNumOutput) SONARO_NONBLOCKING override;
	double GetMinRatio() SONARO_NONBLOCKING override;
	double GetMaxRatio() SONARO_NONBLOCKING override;
	double GetRatio() SONARO_NONBLOCKING override;
	InterfaceRef<IAudioTimeScaler> GetSelfReference() override
	{
		return InterfaceRef<IAudioTimeScaler>::FromThis(this);
	}

	// Init for a ratio within the range, with all that it may depend on.
	void Init(ScalerSettings const& inSettings, unsigned inNumChannels);

private:
	static constexpr unsigned kMostChannels = 32;

	// The channels that still have a block before them.
	struct ActiveChannels
	{
		std::array<ChannelState*, kMostChannels> mStates;
		unsigned mCount = 0;
	};

	// One frame of each of them; those whose block is at an end leave.
	void MakeFrames(ActiveChannels& ioActive);
	void UpdateStatistics(ActiveChannels const& inActive) const;

	std::array<ChannelState, kMostChannels> mStates;
	// Empty unless the ratio is in range.
	std::unique_ptr<ScalerFrame> mFrame;
	unsigned mNumChannels = 0;
	bool mIsInitialized = false;
	bool mIsFirstBlock = true;
	bool mIsOutOfRange = false;
};

} // namespace SN
