#include "ForeignLevelsReader.h"

#include "Fields.h"
#include "MixSettingsReader.h"
#include "Schema.h"

#include "SonaroHost/Otio/Reader.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

namespace SonaroHost::Otio
{

namespace
{

struct LevelName
{
	bool mIsPan = false;
	bool mIsDecibels = false;
};

// "gain", "Volume_dB", "Pan": whatever the case and what stands between the letters.
std::optional<LevelName> ParseName(std::string_view inName)
{
	std::string letters;
	for (char const character : inName.substr(0, 32))
	{
		bool const isUpper = character >= 'A' && character <= 'Z';
		bool const isLower = character >= 'a' && character <= 'z';
		if (isUpper || isLower)
		{
			letters.push_back(isUpper ? static_cast<char>(character - 'A' + 'a') : character);
		}
	}
	if (letters == "pan")
	{
		return LevelName{true, false};
	}
	std::string_view stem = letters;
	bool const isDecibels = stem.ends_with("db");
	stem.remove_suffix(isDecibels ? 2 : 0);
	bool const isGain = stem == "gain" || stem == "volume" || stem == "level";
	return isGain ? std::optional(LevelName{false, isDecibels}) : std::nullopt;
}

// The first of the keys that is there; nothing if none is.
std::string_view FindKey(Cursor const& inObject, std::initializer_list<std::string_view> inKeys)
{
	for (std::string_view const key : inKeys)
	{
		if (inObject.Get().Find(key) != nullptr)
		{
			return key;
		}
	}
	return {};
}

std::string_view FindValueKey(Cursor const& inObject)
{
	return FindKey(inObject, {"value", "Value"});
}

std::string_view FindListKey(Cursor const& inObject)
{
	return FindKey(inObject, {"keyframes", "keyframe", "Keyframes", "ControlPoints", "PointList"});
}

// A number, also one in a text, and "1/2".
struct LooseNumber
{
	double mNumerator = 0.0;
	double mDenominator = 1.0;
	bool mIsFraction = false;

	double GetValue() const { return mNumerator / mDenominator; }
};

std::optional<double> ParseNumber(std::string_view inText)
{
	double number = 0.0;
	auto const [end, error] = std::from_chars(inText.data(), inText.data() + inText.size(), number);
	bool const isWhole = error == std::errc() && end == inText.data() + inText.size();
	return isWhole && std::abs(number) <= kMaxSeconds ? std::optional(number) : std::nullopt;
}

std::optional<LooseNumber> ParseLoose(JsonValue const& inValue)
{
	if (inValue.Is(JsonValue::Type::eNumber))
	{
		bool const isUsable = std::abs(inValue.GetNumber()) <= kMaxSeconds;
		return isUsable ? std::optional(LooseNumber{inValue.GetNumber()}) : std::nullopt;
	}
	if (!inValue.Is(JsonValue::Type::eString))
	{
		return std::nullopt;
	}
	std::string_view const text = inValue.GetString();
	std::size_t const slash = text.find('/');
	if (slash == std::string_view::npos)
	{
		auto const number = ParseNumber(text);
		return number ? std::optional(LooseNumber{*number}) : std::nullopt;
	}
	auto const numerator = ParseNumber(text.substr(0, slash));
	auto const denominator = ParseNumber(text.substr(slash + 1));
	bool const isUsable = numerator && denominator && *denominator >= 1.0;
	return isUsable ? std::optional(LooseNumber{*numerator, *denominator, true}) : std::nullopt;
}

// Reads one gain or pan.
class LevelReader
{
public:
	LevelReader(LevelName inName, std::optional<double> inRate)
		: mName(inName),
		  mRate(inRate)
	{
	}

	std::optional<Curve> Read(Cursor const& inLevel)
	{
		bool const isRead = inLevel.IsObject()                    ? ReadObject(inLevel)
							: inLevel.Is(JsonValue::Type::eArray) ? ReadKeyframes(inLevel)
																  : ReadConstant(inLevel);
		if (!isRead)
		{
			inLevel.Tell(Note::Kind::eLevelNotRead, "another program wrote it in a form that is not known");
			return std::nullopt;
		}
		if (!(mName.mIsPan ? InterpretPan(inLevel) : InterpretGain(inLevel)))
		{
			inLevel.Tell(Note::Kind::eLevelNotRead, "another program wrote it in a unit that is not clear");
			return std::nullopt;
		}
		if (!mCurve.IsConstant())
		{
			SortKeyframes(mCurve, inLevel);
		}
		return std::move(mCurve);
	}

private:
	bool ReadObject(Cursor const& inLevel)
	{
		JsonValue const* const unit = inLevel.Get().Find("unit");
		if (unit != nullptr && unit->Is(JsonValue::Type::eString))
		{
			mName.mIsDecibels |= unit->GetString() == "dB" || unit->GetString() == "db";
		}
		if (std::string_view const list = FindListKey(inLevel); !list.empty())
		{
			return ReadKeyframes(Cursor(inLevel, list));
		}
		std::string_view const value = FindValueKey(inLevel);
		return !value.empty() && ReadConstant(Cursor(inLevel, value));
	}

	bool ReadConstant(Cursor const& inValue)
	{
		auto const number = ParseLoose(inValue.Get());
		mCurve.mConstant = number ? number->GetValue() : 0.0;
		mAreFractions = number && number->mIsFraction;
		return number.has_value();
	}

	bool ReadKeyframes(Cursor const& inList)
	{
		if (!inList.Is(JsonValue::Type::eArray))
		{
			return false;
		}
		std::size_t const count = inList.Get().GetElements().size();
		for (std::size_t i = 0; i < count; ++i)
		{
			if (!ReadKeyframe(Cursor(inList, i)))
			{
				return false;
			}
		}
		// Which unit the times have must be the same for all.
		bool const areAll = mRelativeTimes == 0 || mRelativeTimes == count;
		mCurve.mTimeUnit = mRelativeTimes == 0 ? Curve::TimeUnit::eTime : Curve::TimeUnit::eFractionOfLength;
		return count > 0 && areAll;
	}

	bool ReadKeyframe(Cursor const& inKeyframe)
	{
		std::string_view const key = FindKey(inKeyframe, {"time", "frame", "when", "Time"});
		std::string_view const valueKey = FindValueKey(inKeyframe);
		if (key.empty() || valueKey.empty())
		{
			return false;
		}
		auto const value = ParseLoose(Cursor(inKeyframe, valueKey).Get());
		auto const time = ReadKeyframeTime(Cursor(inKeyframe, key), key);
		if (!value || !time)
		{
			return false;
		}
		mAreFractions = value->mIsFraction || (mAreFractions && !mCurve.mKeyframes.empty());
		mCurve.mKeyframes.push_back({*time, value->GetValue(), Interpolation::eLinear});
		return true;
	}

	std::optional<RationalTime> ReadKeyframeTime(Cursor const& inTime, std::string_view inKey)
	{
		if (inTime.IsObject())
		{
			return ReadIfUsable(inTime, ReadTime);
		}
		auto const number = ParseLoose(inTime.Get());
		if (!number)
		{
			return std::nullopt;
		}
		if (number->mIsFraction)
		{
			++mRelativeTimes;
			bool const isWithin = number->mNumerator >= 0.0 && number->mNumerator <= number->mDenominator;
			return isWithin ? std::optional(RationalTime{number->mNumerator, number->mDenominator})
							: std::nullopt;
		}
		if (inKey == "time" || inKey == "Time")
		{
			inTime.Tell(Note::Kind::eGuess, "the time is taken as seconds from the item's start");
			return RationalTime{number->GetValue(), 1.0};
		}
		if (!mRate || std::abs(number->GetValue()) > kMaxSeconds * *mRate)
		{
			return std::nullopt;
		}
		inTime.Tell(Note::Kind::eGuess,
			"the time is taken as frames of the item's source_range, from the item's start");
		return RationalTime{number->GetValue(), *mRate};
	}

	template <class Function>
	void ForEachValue(Function const& inFunction)
	{
		if (mCurve.IsConstant())
		{
			inFunction(mCurve.mConstant);
		}
		for (Curve::Keyframe& keyframe : mCurve.mKeyframes)
		{
			inFunction(keyframe.mValue);
		}
	}

	std::pair<double, double> GetExtremes()
	{
		double smallest = kMaxSeconds;
		double largest = -kMaxSeconds;
		ForEachValue(
			[&smallest, &largest](double inValue)
			{
				smallest = std::min(smallest, inValue);
				largest = std::max(largest, inValue);
			});
		return {smallest, largest};
	}

	bool InterpretGain(Cursor const& inLevel)
	{
		constexpr double kMaxLinear = 4.0;
		auto const [smallest, largest] = GetExtremes();
		mCurve.mScale = AutomationScale::eDecibels;
		if (mName.mIsDecibels || smallest < 0.0)
		{
			if (!mName.mIsDecibels)
			{
				inLevel.Tell(Note::Kind::eGuess, "a gain with a negative value is taken as decibels");
			}
			return largest <= kMaxGainDecibels;
		}
		inLevel.Tell(Note::Kind::eGuess, "a gain from 0 to 4 is taken as a linear factor");
		mCurve.mScale = AutomationScale::eLinear;
		return largest > 0.0 && largest <= kMaxLinear;
	}

	bool InterpretPan(Cursor const& inLevel)
	{
		auto const [smallest, largest] = GetExtremes();
		if (mAreFractions)
		{
			ForEachValue([](double& ioValue) { ioValue = 2.0 * ioValue - 1.0; });
			return smallest >= 0.0 && largest <= 1.0;
		}
		inLevel.Tell(Note::Kind::eGuess, "a pan of another program is taken as -1 (left) to 1 (right)");
		return smallest >= -1.0 && largest <= 1.0 && (smallest < 0.0 || largest == 0.0);
	}

	LevelName mName;
	std::optional<double> mRate;
	Curve mCurve;
	std::size_t mRelativeTimes = 0;
	// Values are written as "1/2".
	bool mAreFractions = false;
};

// Walks an effect's metadata.
class ParameterSearch
{
public:
	explicit ParameterSearch(std::optional<double> inRate)
		: mRate(inRate)
	{
	}

	void Search(Cursor const& inObject, bool inIsTop)
	{
		for (JsonMember const& member : inObject.Get().GetMembers())
		{
			Cursor const value(inObject, member);
			if (auto const name = ParseName(member.mKey))
			{
				Take(*name, value);
			}
			else if (member.mKey == "parameters" || member.mKey == "parameter" || member.mKey == "params")
			{
				SearchParameters(value);
			}
			else if (inIsTop && value.IsObject() && member.mKey != "sonaro")
			{
				Search(value, false);
			}
		}
	}

	void Take(LevelName inName, Cursor const& inLevel)
	{
		std::optional<Curve>& level = inName.mIsPan ? mLevels.mPan : mLevels.mGain;
		if (level)
		{
			inLevel.Tell(Note::Kind::eLevelNotRead, "it is one more of the same; the first one counts");
			return;
		}
		level = LevelReader(inName, mRate).Read(inLevel);
	}

	ForeignLevels TakeLevels() { return std::move(mLevels); }

private:
	void SearchParameters(Cursor const& inParameters)
	{
		if (inParameters.Is(JsonValue::Type::eArray))
		{
			ForEach(inParameters, [this](Cursor const& inParameter) { SearchNamed(inParameter); });
		}
		else if (!SearchNamed(inParameters))
		{
			for (JsonMember const& member : inParameters.Get().GetMembers())
			{
				if (auto const name = ParseName(member.mKey))
				{
					Take(*name, Cursor(inParameters, member));
				}
			}
		}
	}

	// Whether it is one parameter that names itself.
	bool SearchNamed(Cursor const& inParameter)
	{
		std::string_view const key = FindKey(inParameter, {"name", "parameterid", "id"});
		JsonValue const* const name = key.empty() ? nullptr : inParameter.Get().Find(key);
		if (name == nullptr || !name->Is(JsonValue::Type::eString))
		{
			return false;
		}
		if (auto const level = ParseName(name->GetString()))
		{
			Take(*level, inParameter);
		}
		return true;
	}

	std::optional<double> mRate;
	ForeignLevels mLevels;
};

} // namespace

ForeignLevels ReadEffectLevels(Cursor const& inMetadata, std::optional<double> inRate)
{
	ParameterSearch search(inRate);
	search.Search(inMetadata, true);
	return search.TakeLevels();
}

ForeignLevels ReadItemLevels(Cursor const& inMetadata, std::optional<double> inRate)
{
	ParameterSearch search(inRate);
	for (JsonMember const& space : inMetadata.Get().GetMembers())
	{
		if (space.mKey == "sonaro")
		{
			continue;
		}
		Cursor const around(inMetadata, space);
		for (JsonMember const& member : space.mValue.GetMembers())
		{
			auto const name = ParseName(member.mKey);
			Cursor const level(around, member);
			if (name && level.IsObject() && !FindListKey(level).empty())
			{
				search.Take(*name, level);
			}
		}
	}
	return search.TakeLevels();
}

} // namespace SonaroHost::Otio
