#include "ForeignLevelsReader.h"

#include "LevelShapes.h"
#include "LevelTaker.h"
#include "Otio/Json/Fields.h"

#include <utility>

namespace SonaroHost::Otio
{

namespace
{

// Walks an effect's metadata.
class EffectSearch
{
public:
	explicit EffectSearch(std::optional<TimeRange> const& inRange)
		: mTaker(inRange)
	{
	}

	EffectLevels Read(Cursor const& inMetadata)
	{
		Search(inMetadata, true);
		mResult.mLevels = mTaker.TakeLevels();
		mResult.mHasUnreadLevel = mTaker.HasUnreadLevel();
		bool const isUnknown = mHasUnknown || !mHasParameters;
		mResult.mRest = mHasChanged ? ParameterState::kChanged
						: isUnknown ? ParameterState::kUnknown
									: ParameterState::kDefault;
		return std::move(mResult);
	}

private:
	void Search(Cursor const& inObject, bool inIsTop)
	{
		if (IsSwitchedOff(inObject.Get()))
		{
			mHasParameters = true;
			return;
		}
		JsonMember const* const name = FindMember(inObject.Get(), "effectname|displayname|matchname|name");
		if (mResult.mName.empty() && name != nullptr && name->mValue.Is(JsonValue::Type::kString))
		{
			mResult.mName = name->mValue.GetString();
		}
		for (JsonMember const& member : inObject.Get().GetMembers())
		{
			Cursor const value(inObject, member);
			if (auto const level = ParseLevelName(member.mKey))
			{
				mTaker.Take(*level, FindShape(member.mValue), value);
			}
			else if (MatchesKey(member.mKey, "parameters|parameter|params"))
			{
				mHasParameters = true;
				SearchParameters(value);
			}
			else if (inIsTop && value.IsObject() && member.mKey != "sonaro")
			{
				Search(value, false);
			}
		}
	}

	void SearchParameters(Cursor const& inParameters)
	{
		if (inParameters.Is(JsonValue::Type::kArray))
		{
			ForEach(inParameters,
				[this](Cursor const& inParameter) { mHasUnknown |= !SearchNamed(inParameter); });
		}
		else if (!SearchNamed(inParameters))
		{
			for (JsonMember const& member : inParameters.Get().GetMembers())
			{
				auto const name = ParseLevelName(member.mKey);
				mHasUnknown |= !name;
				if (name)
				{
					mTaker.Take(*name, FindShape(member.mValue), Cursor(inParameters, member));
				}
			}
		}
	}

	// Whether it is one parameter that names itself.
	bool SearchNamed(Cursor const& inParameter)
	{
		JsonValue const* const name = FindParameterName(inParameter.Get());
		if (name == nullptr || IsSwitchedOff(inParameter.Get()))
		{
			return name != nullptr;
		}
		LevelShape const* const shape = FindNamedShape(inParameter.Get());
		if (auto const level = ParseLevelName(name->GetString()))
		{
			mTaker.Take(*level, shape, inParameter);
			return true;
		}
		ParameterState const state =
			shape != nullptr ? FindState(inParameter.Get(), *shape) : ParameterState::kUnknown;
		mHasUnknown |= state == ParameterState::kUnknown;
		mHasChanged |= state == ParameterState::kChanged;
		return true;
	}

	LevelTaker mTaker;
	EffectLevels mResult;
	bool mHasParameters = false;
	bool mHasUnknown = false;
	bool mHasChanged = false;
};

} // namespace

EffectLevels ReadEffectLevels(Cursor const& inMetadata, std::optional<TimeRange> const& inRange)
{
	return EffectSearch(inRange).Read(inMetadata);
}

} // namespace SonaroHost::Otio
