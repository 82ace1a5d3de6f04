#pragma once

#include "Panner/Algorithm/LowFrequencyFilter.h"
#include "Panner/Algorithm/PanLaw.h"
#include "Panner/AutomatedPanner.h"
#include "zorvaudiodsp/GainRamp.h"

#include <array>

namespace SN
{

// The base of panners that place a signal in the field of 5.1. Controls: X from 0 left to 1 right, Y from
// 0 front to 1 rear, the share of the centre channel from 0 to 1, and the linear gain of the low frequency
// channel, which is derived by a filter.
//
// Gains    A new position is reached over 5 ms, after the first jump of the playhead over 15 ms; at a jump
//          the gains stand at once.
// History  The filter's, from Init on: over Reset and over jumps. A silent input neither feeds it nor lets
//          it fade. A clone starts with none.
class SurroundPanner : public AutomatedPanner
{
public:
	// eFailure for another count of controls than the class's own.
	int Init(AutomatedPannerSettings const& inSettings);

	bool HasHistory() override { return true; }
	void ProcessAudioData(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput,
		TickTime const& inTime) SONARO_NONBLOCKING override;

protected:
	using Law = SurroundGains (*)(SurroundPosition const& inPosition);

	// The index of a channel in the order of 5.1.
	enum Channel : unsigned
	{
		kLeft,
		kRight,
		kCenter,
		kLowFrequency,
		kLeftSurround,
		kRightSurround,
		kNumChannels,
	};

	SurroundPanner(
		char16_t const* inNodeName, AudioChannelType inInputType, Law inLaw, std::size_t inParameterCount);

	void CopyFrom(SurroundPanner const& inOther, FrameRate const& inFrameRate, unsigned inControlInterval);

	// Fills the six channels. Both buffers have the channels of their layouts, and the input is not silent.
	virtual void PlaceChannels(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput) = 0;

	dsp::GainRamp& GetRamp(Channel inChannel) { return mRamps[inChannel]; }
	LowFrequencyFilter& GetFilter() { return mFilter; }
	// The position that the gains in force stand for.
	float GetX() const { return mLastPosition.mX; }

private:
	void SetGains();
	void MakeRamps(
		FrameRate const& inFrameRate, std::array<float, kNumChannels> const& inGains, float inRampSeconds);

	Law mLaw;
	std::size_t mParameterCount;
	// The start value is out of range, so that the first position is another one.
	SurroundPosition mLastPosition{.mX = -1.0f};
	SurroundGains mGains;
	LowFrequencyFilter mFilter;
	std::array<dsp::GainRamp, kNumChannels> mRamps;
};

} // namespace SN
