#include "Fuzzing.h"
#include "SonaroHost/Otio/PluginEffect.h"
#include "SonaroHost/OtioSequence/EffectChain.h"

using namespace SonaroFuzzing;

// Files of effects, with the states of their plugins.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* inData, std::size_t inSize)
{
	std::filesystem::path const path = WriteInput("effects.json", AsText(inData, inSize));
	Try(
		[&path]
		{
			for (SonaroHost::Otio::PluginEffect const& effect : SonaroHost::Otio::ReadEffectFile(path))
			{
				Require(!effect.mUri.empty());
			}
		});
	Try([&path] { SonaroHost::Otio::ReadEffectChain(path); });
	return 0;
}
