#pragma once

#include "Sonaro/AudioChannelMix.h"
#include "Sonaro/PanProcessorType.h"
#include "Sonaro/Types.h"

#include <optional>

namespace SonaroHost
{

// The most channels without places that can be panned, which goes by pairs.
inline constexpr unsigned kMaxPanChannels = 32;

// What the channels of a sound are to become.
struct LayoutRequest
{
	// The wanted layout. Without one it is the sound's own, and stereo where mono is panned.
	std::optional<SN::AudioChannelLayout> mLayout;
	// The pan from 0 (left) through 0.5 (middle) to 1 (right).
	std::optional<double> mPan;
	// What of 5.1 is heard in mono and stereo; without it, the engine's own choice.
	std::optional<SN::AudioChannelMix::MixdownType51> mMixdown;
};

// How a layout is turned into another: nothing at all, a fixed conversion, or a panner.
class LayoutPlan
{
public:
	// A plan without channels.
	LayoutPlan() = default;
	// Throws a HostError for a request that does not fit the sound.
	LayoutPlan(SN::AudioChannelLayout const& inInput, LayoutRequest const& inRequest);

	SN::AudioChannelLayout const& GetOutputLayout() const { return mOutput; }

	// Each sample of the output is one of the input or zero: nothing is scaled or added.
	bool KeepsSamples() const;

	// The kind of panner, and where it stands; nothing without a pan.
	std::optional<SN::PanProcessorType> const& GetPanner() const { return mPanner; }
	float GetPan() const { return static_cast<float>(*mRequest.mPan); }
	std::optional<SN::AudioChannelMix::MixdownType51> const& GetMixdown() const { return mRequest.mMixdown; }

private:
	void ChooseOutput();
	void CheckMixdown() const;
	void ChoosePanner();

	LayoutRequest mRequest;
	SN::AudioChannelLayout mInput;
	SN::AudioChannelLayout mOutput;
	std::optional<SN::PanProcessorType> mPanner;
};

} // namespace SonaroHost
