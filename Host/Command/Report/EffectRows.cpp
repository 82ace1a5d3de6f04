#include "EffectRows.h"

namespace SonaroCommand
{

using namespace SonaroHost;

namespace
{

Json Describe(EffectFacts::Setting const& inSetting)
{
	return inSetting.mText          ? Json(*inSetting.mText)
		   : inSetting.mPoints == 0 ? Json(inSetting.mValue)
									: Json{{"first", inSetting.mValue}, {"keyframes", inSetting.mPoints}};
}

void AddFacts(Json& ioJson, EffectFacts const& inFacts)
{
	ioJson["uri"] = inFacts.mUri;
	if (!inFacts.mPreset.empty())
	{
		ioJson["preset"] = inFacts.mPreset;
	}
	ioJson["hasOwnBypass"] = inFacts.mHasOwnBypass;
	ioJson["controls"] = Json::object();
	for (EffectFacts::Setting const& setting : inFacts.mSettings)
	{
		ioJson["controls"][setting.mSymbol] = Describe(setting);
	}
	if (inFacts.mBypass)
	{
		ioJson["bypass"] =
			inFacts.mBypass->mPoints == 0 ? Json(inFacts.mBypass->mValue > 0.0) : Describe(*inFacts.mBypass);
	}
}

} // namespace

Json ListEffects(Sequence::GraphReport const& inReport)
{
	Json list = Json::array();
	for (auto const& effect : inReport.mEffects)
	{
		Json json{{"name", effect->mName}, {"on", effect->mPlace}, {"place", effect->mOrigin},
			{"latencySamples", effect->mLatencyFrames}};
		if (effect->mFacts)
		{
			AddFacts(json, *effect->mFacts);
		}
		list.push_back(std::move(json));
	}
	return list;
}

} // namespace SonaroCommand
