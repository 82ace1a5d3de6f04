#include "ItemLevelsReader.h"

#include "LevelShapes.h"
#include "LevelTaker.h"
#include "LooseNumber.h"
#include "ParameterState.h"

namespace SonaroHost::Otio
{

namespace
{

bool IsOwn(MixSettings const& inOwn, LevelTarget inTarget)
{
	switch (inTarget)
	{
	case LevelTarget::kGain:
		return inOwn.mGain.has_value();
	case LevelTarget::kPan:
		return inOwn.mPan.has_value();
	case LevelTarget::kMute:
		return inOwn.mMute.has_value();
	case LevelTarget::kSolo:
		return inOwn.mSolo.has_value();
	case LevelTarget::kChannels:
		return !inOwn.mChannels.empty();
	default:
		return true;
	}
}

// The number of a channel: the element itself, or its member with "channel" in its name.
std::optional<double> FindChannel(JsonValue const& inElement)
{
	if (inElement.Is(JsonValue::Type::kNumber))
	{
		return inElement.GetNumber();
	}
	JsonMember const* const member = FindMember(inElement, "sourcechannelid|sourcechannel|channelid|channel");
	bool const isNumber = member != nullptr && member->mValue.Is(JsonValue::Type::kNumber);
	return isNumber ? std::optional(member->mValue.GetNumber()) : std::nullopt;
}

// How many channels a map has that takes each for itself, from the first one on, counted from 0 or 1; 0 for others.
std::size_t CountPlainChannels(JsonValue const& inMap)
{
	double next = 0.0;
	for (JsonValue const& element : inMap.GetElements())
	{
		auto const channel = FindChannel(element);
		bool const isFirst = &element == inMap.GetElements().data();
		if (!channel || (isFirst ? *channel != 0.0 && *channel != 1.0 : *channel != next))
		{
			return 0;
		}
		next = *channel + 1.0;
	}
	return inMap.GetElements().size();
}

// Whether the value changes nothing, or says nothing that could be meant.
bool ChangesNothing(LevelName const& inName, JsonValue const& inValue)
{
	auto const number = ParseLooseNumber(FindInner(inValue, "value"));
	if (inName.mTarget == LevelTarget::kChannels)
	{
		bool const canBeMap = inValue.Is(JsonValue::Type::kArray) || inValue.Is(JsonValue::Type::kObject);
		return !canBeMap || IsEmpty(inValue);
	}
	bool const isGain = inName.mTarget == LevelTarget::kGain && !inName.mIsDecibels;
	return !number || number->GetValue() == (isGain ? 1.0 : 0.0);
}

class ItemSearch
{
public:
	ItemSearch(LevelTaker* ioTaker, MixSettings const& inOwn)
		: mTaker(ioTaker),
		  mOwn(inOwn)
	{
	}

	void Search(Cursor const& inObject, std::size_t inDepth)
	{
		constexpr std::size_t kDeepest = 3;
		for (JsonMember const& member : inObject.Get().GetMembers())
		{
			Cursor const value(inObject, member);
			// An object at the top is what one program wrote, whatever it is called.
			bool const canBeLevel = inDepth > 0 || !value.IsObject();
			auto const name = canBeLevel ? ParseLevelName(member.mKey) : std::nullopt;
			if (name)
			{
				Consider(*name, value, inDepth);
			}
			else if (value.Is(JsonValue::Type::kArray) && MatchesKey(member.mKey, "channels|audiochannels"))
			{
				Consider({LevelTarget::kChannels, false}, value, inDepth);
			}
			else if (inDepth < kDeepest && value.IsObject() && (inDepth > 0 || member.mKey != "sonaro"))
			{
				Search(value, inDepth + 1);
			}
		}
	}

	std::size_t GetFirstChannels() const { return mFirstChannels; }

private:
	void Consider(LevelName const& inName, Cursor const& inValue, std::size_t inDepth)
	{
		bool const isSwitch = inName.mTarget == LevelTarget::kMute || inName.mTarget == LevelTarget::kSolo ||
							  inName.mTarget == LevelTarget::kChannels;
		// Gain and pan are words of pictures, too.
		if (IsOwn(mOwn, inName.mTarget) || (!isSwitch && (mTaker == nullptr || inDepth != 1)))
		{
			return;
		}
		LevelShape const* const shape = FindShape(inValue.Get());
		if (!isSwitch && shape != nullptr && FindMember(inValue.Get(), shape->mKeyframes) != nullptr)
		{
			mTaker->Take(inName, shape, inValue);
			return;
		}
		if (ChangesNothing(inName, inValue.Get()))
		{
			return;
		}
		if (std::size_t const channels =
				inName.mTarget == LevelTarget::kChannels ? CountPlainChannels(inValue.Get()) : 0)
		{
			mFirstChannels = channels;
			return;
		}
		inValue.Tell(Note::Kind::kLevelNotRead, DescribeUnread(inName.mTarget, "is in an unknown form"));
	}

	LevelTaker* mTaker;
	MixSettings const& mOwn;
	std::size_t mFirstChannels = 0;
};

} // namespace

ForeignLevels ReadItemLevels(
	Cursor const& inMetadata, std::optional<TimeRange> const& inRange, MixSettings const& inOwn)
{
	LevelTaker taker(inRange);
	ItemSearch search(&taker, inOwn);
	search.Search(inMetadata, 0);
	ForeignLevels levels = taker.TakeLevels();
	levels.mFirstChannels = search.GetFirstChannels();
	return levels;
}

void TellOfMediaLevels(Cursor const& inMetadata, MixSettings const& inOwn)
{
	ItemSearch(nullptr, inOwn).Search(inMetadata, 0);
}

} // namespace SonaroHost::Otio
