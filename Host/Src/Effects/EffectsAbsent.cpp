#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Effects/EffectLibrary.h"
#include "SonaroHost/Effects/PreparedEffect.h"

namespace SonaroHost::Effects
{

namespace
{

[[noreturn]] void RefuseEffects()
{
	Refuse(
		"effects are LV2 plugins, and this program was built without lilv, which hosts them; build it with "
		"liblilv-dev and SONARO_WITH_LV2");
}

} // namespace

struct PreparedEffect::Plan
{
};

PreparedEffect::PreparedEffect(EffectSetup const&, double)
{
	RefuseEffects();
}

void PreparedEffect::CheckChannels(std::size_t) const
{
	RefuseEffects();
}

SN::InterfaceRef<SN::IAudioProcessor> PreparedEffect::Make(SN::InterfaceRef<SN::IAudioRenderContext> const&,
	SN::FrameRate const&, SN::AudioChannelLayout const&) const
{
	RefuseEffects();
}

std::string DescribeEffectLibraries()
{
	return {};
}

std::vector<EffectSummary> ListEffects()
{
	RefuseEffects();
}

std::vector<std::string> ListUnreadable()
{
	return {};
}

std::optional<EffectDescription> FindEffect(std::string const&)
{
	RefuseEffects();
}

unsigned MeasureLatency(std::string const&, double)
{
	RefuseEffects();
}

} // namespace SonaroHost::Effects
