#pragma once

#include "Sonaro/AudioChannelMix.h"

#include <optional>

namespace SonaroHost
{

// Sets the process's choice of a mixdown for as long as conversions are made; empty leaves the engine's own.
class MixdownScope
{
public:
	explicit MixdownScope(std::optional<SN::AudioChannelMix::MixdownType51> const& inMixdown)
		: mOld(SN::AudioChannelMix::Get51MixdownType())
	{
		SN::AudioChannelMix::Set51MixdownType(inMixdown ? *inMixdown : mOld);
	}
	~MixdownScope() { SN::AudioChannelMix::Set51MixdownType(mOld); }
	MixdownScope(MixdownScope const&) = delete;
	MixdownScope& operator=(MixdownScope const&) = delete;

private:
	unsigned mOld;
};

} // namespace SonaroHost
