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

	// The gains, as linear amplitudes, of the clip that goes and of the one that comes. inProgress runs from
	// 0 at the start of the transition to 1 at its end. Called on the render thread for each sample of each
	// channel that is heard, so it must be cheap, and depend on nothing but its arguments.
	virtual void GetGainValue(AudioTransitionParameters const& inParameters, float inProgress,
		float& outOutgoingGain, float& outIncomingGain) = 0;

	~IAudioTransition() override = default;
};

} // namespace SN
