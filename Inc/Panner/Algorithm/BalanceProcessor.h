#pragma once

#include "Sonaro/Nonblocking.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvaudiodsp/AudioBufferChannel.h"

#include <array>

namespace SN
{

// Balances any number of channels, taken as pairs of a left and a right one: the side that is panned to is
// copied, the other one scaled. Nothing ramps: a new pan holds from the next block on.
class BalanceProcessor
{
public:
	// The largest number of pairs that are looked at.
	static constexpr unsigned kMaxPairs = 16;

	BalanceProcessor() = default;

	// inPan: 0 left, 0.5 middle, 1 right.
	void Process(
		dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput, float inPan) SONARO_NONBLOCKING;

private:
	// A view of each channel of one side of a buffer, kept so that a call makes none.
	using Views = std::array<dsp::AudioBufferChannel, kMaxPairs>;

	void SetPan(float inPan) SONARO_NONBLOCKING;
	void ProcessPairs(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput) SONARO_NONBLOCKING;
	void ProcessSide(dsp::AudioBufferChannel const& inInput, dsp::AudioBufferChannel& outOutput,
		bool inIsCopied, float inScale);

	float mLastPan = -1.0f;
	float mLeftScale = 1.0f;
	float mRightScale = 1.0f;
	bool mPanLeft = false;
	bool mCentred = false;
	dsp::SilenceFlags mActiveChannels = dsp::SilenceFlags::All();
	Views mLeftInputs;
	Views mRightInputs;
	Views mLeftOutputs;
	Views mRightOutputs;
};

} // namespace SN
