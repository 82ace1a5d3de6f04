#include "SonaroHost/Effects/EffectLibrary.h"

#include "Lv2/PluginFilter.h"
#include "Lv2/World.h"
#include "SonaroHost/Base/PrintableText.h"

#include <algorithm>
#include <tuple>

namespace SonaroHost::Effects
{

std::string DescribeEffectLibraries()
{
	return "lilv " SONARO_LILV_VERSION;
}

std::vector<EffectSummary> ListEffects()
{
	World::Lock const lock;
	std::vector<EffectSummary> effects;
	LilvPlugins const* const plugins = World::Get().GetPlugins();
	LILV_FOREACH(plugins, at, plugins)
	{
		effects.push_back(
			ReadPlugin(GetUri(lilv_plugin_get_uri(lilv_plugins_get(plugins, at))))->mDescription);
	}
	std::ranges::sort(effects, {},
		[](EffectSummary const& inEffect) { return std::tuple(ToLower(inEffect.mName), inEffect.mUri); });
	return effects;
}

std::vector<std::string> ListUnreadable()
{
	World::Lock const lock;
	return World::Get().GetProblems();
}

std::optional<EffectDescription> FindEffect(std::string const& inUri)
{
	auto const data = ReadPlugin(inUri);
	return data ? std::optional(data->mDescription) : std::nullopt;
}

unsigned MeasureLatency(std::string const& inUri, double inSampleRate)
{
	constexpr unsigned kFrames = 4096;
	auto const start = MakeStart({inUri}, inSampleRate);
	unsigned const channels = start->mData->mDescription.mInputs;
	return zorvcore::classref::MakeObject<PluginFilter>(
		start, PluginFilter::Terms{inSampleRate, kFrames, channels, false})
		->GetLatency();
}

} // namespace SonaroHost::Effects
