#pragma once

#include "LateSwitch.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace SonaroHost::Effects
{

// Keeps what comes out of an effect late by one and the same number of frames, whatever latency the effect states as it
// goes, and fades between it and what went in, which is as late.
//
// Latency  Each frame that comes out is put where it belongs by the latency of its time: later frames cover earlier ones,
//          and what an effect leaves out while its latency falls is heard as it went in.
// Bypass   A straight line over kCurveRamp from one to the other, which begins with the frame that went in when the bypass
//          was set: any cut into blocks gives the same bits. Where nothing fades and the latency is the planned one, samples pass bit for bit.
// Threads  One at a time. Nothing allocates after the constructor.
class AlignedSound
{
public:
	struct Terms
	{
		unsigned mChannels = 0;
		// In frames; no latency is larger.
		unsigned mLatency = 0;
		// Of one call.
		unsigned mMaxFrames = 0;
		double mSampleRate = 48000.0;
	};

	explicit AlignedSound(Terms const& inTerms);

	// Forgets what was heard. The next frames begin with a bypass as it is set by then.
	void Reset();
	// For the frames that go in from now on.
	void SetBypass(bool inIsBypassed) { mIsBypassed = inIsBypassed; }

	// The frames that go into the effect, and those that came out of it, in place: the same part of the buffer for both.
	void TakeInput(dsp::AudioBuffer& inBuffer, unsigned inFirst, unsigned inCount);
	void TakeOutput(dsp::AudioBuffer& ioBuffer, unsigned inFirst, unsigned inCount, unsigned inLatency);

private:
	// Frames of all times, of which the last ones are kept.
	class Ring
	{
	public:
		void Init(std::size_t inFrames) { mSamples.assign(inFrames, 0.0f); }
		void Clear() { mSamples.assign(mSamples.size(), 0.0f); }
		float& At(std::uint64_t inTime) { return mSamples[inTime % mSamples.size()]; }
		// Neighbouring frames, in at most two stretches.
		void Write(std::uint64_t inTime, float const* inSamples, std::size_t inCount);

	private:
		std::vector<float> mSamples;
	};

	void BeginToMove();
	void Align(unsigned inChannel, float* ioSamples, unsigned inCount, unsigned inLatency);
	void Fade(dsp::AudioBuffer& ioBuffer, unsigned inFirst, unsigned inCount);

	Terms mTerms;
	std::vector<Ring> mDry;
	// Only used once the latency was another one than planned.
	std::vector<Ring> mWet;
	bool mMoves = false;
	// Frames since the last Reset, that of the latency before them included, so that none is negative.
	std::uint64_t mTime;
	bool mIsBypassed = false;
	LateSwitch mBypass;
	// How much of the effect is heard, from 0 to mFadeFrames.
	unsigned mFadeFrames;
	unsigned mFade;
	bool mHasBegun = false;
};

} // namespace SonaroHost::Effects
