#pragma once

#include "AudioRender/Core/AudioRenderContextClient.h"
#include "Sonaro/Nonblocking.h"
#include "zorvaudiodsp/GainRamp.h"
#include "zorvcore/threads/AtomicIntegral.h"

#include <memory>

namespace SN
{

// The mute of a track and its fade. In a playback at the top level it follows the host's flag, which any
// thread may write; elsewhere, and in clones, it stands as it stood when it was made.
class TrackMute
{
public:
	// The flag is not 0 while muted.
	using Flag = zorvcore::threads::AtomicIntegral<int>;

	// Audible.
	TrackMute();

	// A null flag reads as audible.
	void Init(
		IAudioRenderContext& inContext, std::shared_ptr<Flag> const& inFlag, FrameRate const& inFrameRate);
	void CloneFrom(TrackMute const& inOther, FrameRate const& inFrameRate);

	// Stands where the flag does at once, without a fade. Fades take 10 ms from then on.
	void StartOver(FrameRate const& inFrameRate) SONARO_NONBLOCKING;
	// Reads the flag and fades towards it.
	void Update() SONARO_NONBLOCKING { mRamp.SetTargetGain(GetGain()); }
	// Whether nothing is heard any more.
	bool IsComplete() const { return mRamp.HasConstantGainZero(); }
	void Process(dsp::AudioBuffer& ioBuffer)
	{
		// Mostly there is nothing to do, for as many tracks as there are.
		if (!mRamp.IsAtRest() || mRamp.GetTargetGain() != 1.0f)
		{
			mRamp.Process(ioBuffer);
		}
	}

private:
	float GetGain() const { return mFlag->Get() != 0 ? 0.0f : 1.0f; }

	// Never null.
	std::shared_ptr<Flag> mFlag;
	dsp::GainRamp mRamp;
};

} // namespace SN
