#pragma once

#include "Sonaro/Types.h"

#include <cstdint>

namespace SN
{

// Three words for a transition, whose meaning is its own: the engine carries them to each call.
class AudioTransitionParameters
{
public:
	friend bool operator==(AudioTransitionParameters const&, AudioTransitionParameters const&) = default;

	std::uint32_t mFirst = 0;
	std::uint32_t mSecond = 19;
	std::uint32_t mThird = 0;
};

// How one clip gives way to the next, implemented by the host.
class SONARO_API IAudioTransition : public virtual Unknown
{
public:
	static constexpr Identifier<IAudioTransition> kIdentifier{0x0c764bed4cdb86caull, 0x55df9c1ba0fede97ull};

	// The gains, as linear amplitudes, of the clip that goes and of the one that comes. inProgress is the
	// place on the transition, whatever the direction of play: 0 at its start, 1 at its end, and past either
	// by a rounding error at most. Called for each sample of each channel that is heard, so it must be cheap.
	// Copies of a graph share the transition and may render on several threads at once: the result depends
	// on the arguments alone.
	virtual void GetGainValue(AudioTransitionParameters const& inParameters, float inProgress,
		float& outOutgoingGain, float& outIncomingGain) SONARO_NONBLOCKING = 0;

	~IAudioTransition() override = default;
};

} // namespace SN
