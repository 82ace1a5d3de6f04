#pragma once

#include "OtioSequence/MakerContext.h"
#include "OtioSequence/Survey/Levels.h"

#include "SonaroHost/Effects/EffectSetup.h"
#include "SonaroHost/Otio/Model.h"
#include "SonaroHost/Sequence/Chain.h"

#include <vector>

namespace SonaroHost::Otio
{

Effects::EffectSetup MakeSetup(PluginEffect const& inPlugin, CurveTiming const& inTiming);

// Adds a plugin as a stage on a sound of this layout. One that cannot be used is left out, and a note of the kind
// kMissingEffect says why.
void AddEffect(MakerContext& ioContext, PluginEffect const& inPlugin, SN::AudioChannelLayout const& inLayout,
	CurveTiming const& inTiming, std::vector<Sequence::Stage>& ioStages);

// The plugins of an item, in their order.
std::vector<Sequence::Stage> MakeEffects(MakerContext& ioContext, Item const& inItem,
	SN::AudioChannelLayout const& inLayout, CurveTiming const& inTiming);

} // namespace SonaroHost::Otio
