#include "SonaroHost/OtioSequence/EffectChain.h"

#include "OtioSequence/Item/ItemEffects.h"

#include "SonaroHost/Otio/PluginEffect.h"

namespace SonaroHost::Otio
{

std::vector<Effects::EffectSetup> ReadEffectChain(std::filesystem::path const& inPath)
{
	std::vector<Effects::EffectSetup> setups;
	for (PluginEffect const& plugin : ReadEffectFile(inPath))
	{
		Effects::EffectSetup& setup = setups.emplace_back(MakeSetup(plugin, {Ratio(), SN::kTimeZero}));
		setup.mFile = inPath;
		setup.mPlace = plugin.mPlace;
		setup.mRemarks = plugin.mRemarks;
	}
	return setups;
}

} // namespace SonaroHost::Otio
