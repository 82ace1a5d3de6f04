#include "ItemEffects.h"

#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/PrintableText.h"
#include "SonaroHost/Effects/PreparedEffect.h"

#include <utility>

namespace SonaroHost::Otio
{

namespace
{

Sequence::Effect MakeEffect(MakerContext& ioContext, PluginEffect const& inPlugin,
	SN::AudioChannelLayout const& inLayout, CurveTiming const& inTiming)
{
	Effects::PreparedEffect effect(MakeSetup(inPlugin, inTiming), ioContext.mResult.mSampleRate);
	effect.CheckChannels(inLayout.size());
	for (std::string const& remark : effect.GetRemarks())
	{
		ioContext.Tell(Note::Kind::kRemark, inPlugin.mPlace,
			"the effect " + QuoteName(effect.GetName()) + ": " + remark);
	}
	Sequence::Effect stage{effect.GetName(), {}, false, effect.GetJumps(), effect.GetFacts(),
		effect.GetControls(), inPlugin.mPlace};
	stage.mMake = [made = std::move(effect)](auto const&... inGraph) { return made.Make(inGraph...); };
	return stage;
}

} // namespace

Effects::EffectSetup MakeSetup(PluginEffect const& inPlugin, CurveTiming const& inTiming)
{
	Effects::EffectSetup setup{inPlugin.mUri, inPlugin.mPreset, inPlugin.mState};
	auto const make = [&inTiming](std::string const& inSymbol, Curve const& inCurve) {
		return Effects::ControlSetting{inSymbol, inCurve.mConstant, MakePoints(inCurve, inTiming)};
	};
	for (PluginEffect::Control const& control : inPlugin.mControls)
	{
		setup.mSettings.push_back(make(control.mSymbol, control.mValue));
		setup.mSettings.back().mText = control.mText;
		setup.mSettings.back().mIsText = control.mText.has_value();
	}
	if (inPlugin.mBypass)
	{
		setup.mBypass = make({}, *inPlugin.mBypass);
	}
	return setup;
}

void AddEffect(MakerContext& ioContext, PluginEffect const& inPlugin, SN::AudioChannelLayout const& inLayout,
	CurveTiming const& inTiming, std::vector<Sequence::Stage>& ioStages)
{
	try
	{
		ioStages.emplace_back(MakeEffect(ioContext, inPlugin, inLayout, inTiming));
	}
	catch (HostError const& error)
	{
		HostError::Parts parts = error.GetParts();
		std::string const place = inPlugin.mPlace + std::exchange(parts.mPlace, {});
		ioContext.Tell(Note::Kind::kMissingEffect, place,
			std::string("an effect is bypassed: ") + HostError(error.GetKind(), std::move(parts)).what());
	}
}

std::vector<Sequence::Stage> MakeEffects(MakerContext& ioContext, Item const& inItem,
	SN::AudioChannelLayout const& inLayout, CurveTiming const& inTiming)
{
	std::vector<Sequence::Stage> stages;
	for (Effect const& effect : inItem.mEffects)
	{
		if (effect.mIsEnabled && effect.mPlugin)
		{
			AddEffect(ioContext, *effect.mPlugin, inLayout, inTiming, stages);
		}
	}
	return stages;
}

} // namespace SonaroHost::Otio
