#include "MulticamReader.h"

#include "CurveReader.h"
#include "Otio/Json/Fields.h"
#include "SubmixReader.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

namespace SonaroHost::Otio
{

namespace
{

// More than any stack has.
constexpr double kMostAngles = 1.0e9;

AngleName ReadAngle(Cursor const& inValue)
{
	if (!inValue.Is(JsonValue::Type::kNumber))
	{
		inValue.Require(JsonValue::Type::kString, "the number of an angle, from 1, or its name");
		return {0, ReadName(inValue)};
	}
	double const number = inValue.Get().GetNumber();
	if (!(number >= 1.0) || number != std::floor(number))
	{
		inValue.Refuse(
			Write(number) + " is not the number of an angle; use a whole number from 1 on, or a name");
	}
	return {static_cast<std::size_t>(std::min(number, kMostAngles)), {}};
}

RationalTime ReadFadeLength(Cursor const& inValue)
{
	RationalTime const length = ReadSecondsOrTime(inValue);
	if (length.mValue < 0.0)
	{
		inValue.Refuse("the fade is negative; use 0 or more");
	}
	return length;
}

AngleCut ReadCut(Cursor const& inValue, std::size_t inIndex)
{
	inValue.Require(JsonValue::Type::kObject, "an object with \"time\" and \"angle\"");
	CheckKeys(inValue, {"time", "angle"}, {"fade"});
	return {ReadSecondsOrTime(Cursor(inValue, "time")), ReadAngle(Cursor(inValue, "angle")),
		ReadIfThere(Cursor(inValue, "fade"), ReadFadeLength), inIndex};
}

void SortCuts(std::vector<AngleCut>& ioCuts, Cursor const& inList)
{
	auto const getTime = [](AngleCut const& inCut) { return ToSeconds(inCut.mTime); };
	std::ranges::stable_sort(ioCuts, {}, getTime);
	std::vector<AngleCut> sorted;
	for (AngleCut& cut : ioCuts)
	{
		if (!sorted.empty() && getTime(sorted.back()) == getTime(cut))
		{
			inList.Tell(Note::Kind::kGuess, "two cuts have the same time; the last one is used");
			sorted.pop_back();
		}
		sorted.push_back(std::move(cut));
	}
	ioCuts = std::move(sorted);
}

// "Cam 1", "Cam 2" and so on, as far as there are names.
std::string ListNames(std::vector<Composable const*> const& inAngles)
{
	constexpr std::size_t kMostNames = 8;
	std::string names;
	for (std::size_t i = 0; i < std::min(inAngles.size(), kMostNames); ++i)
	{
		std::string const& name = inAngles[i]->AsItem()->mName;
		names += name.empty() ? "" : (names.empty() ? " or " : ", ") + Quote(name);
	}
	return names;
}

void CheckAngle(Cursor const& inStack, Stack const& inRead, AngleName const& inName, std::string const& inKey)
{
	auto const angles = ListAngles(inRead);
	std::string const place = inRead.mPlace + "/metadata/sonaro/multicam/" + inKey;
	if (!FindAngle(inRead, inName))
	{
		throw Refusal(place, "there is no angle " +
								 (inName.mNumber > 0 ? std::to_string(inName.mNumber) : Quote(inName.mName)) +
								 "; the stack has " + std::to_string(angles.size()) +
								 ", its children without tracks of other kinds than Audio; use a "
								 "number from 1 on" +
								 ListNames(angles));
	}
	auto const isNamed = [&inName](Composable const* inAngle)
	{ return inName.mNumber == 0 && inAngle->AsItem()->mName == inName.mName; };
	if (std::ranges::count_if(angles, isNamed) > 1)
	{
		inStack.GetFindings().TellOnce(Note::Kind::kGuess,
			"several angles are named " + Quote(inName.mName) + "; the first one is used",
			[&place] { return place; });
	}
}

} // namespace

std::shared_ptr<MulticamSettings const> ReadMulticam(Cursor const& inValue)
{
	inValue.Require(JsonValue::Type::kObject, "an object with \"cuts\"");
	TellUnknownKeys(inValue, {"cuts", "angle", "fade", "curve"});
	auto settings = std::make_shared<MulticamSettings>();
	settings->mFirst = ReadIfThere(Cursor(inValue, "angle"), ReadAngle).value_or(AngleName{1, {}});
	settings->mFade = ReadIfThere(Cursor(inValue, "fade"), ReadFadeLength).value_or(RationalTime());
	settings->mShape = ReadIfThere(Cursor(inValue, "curve"), ReadShape);
	Cursor const cuts(inValue, "cuts");
	ForEach(cuts, [&settings](Cursor const& inCut)
		{ settings->mCuts.push_back(ReadCut(inCut, settings->mCuts.size())); });
	SortCuts(settings->mCuts, cuts);
	return settings;
}

void CheckAngles(Cursor const& inStack, Stack const& inRead)
{
	auto const& multicam = inRead.GetSettings().mMulticam;
	if (!multicam)
	{
		return;
	}
	if (ListAngles(inRead).empty())
	{
		// Silent, as any stack without audio.
		inStack.GetFindings().TellOnce(Note::Kind::kRemark,
			"the stack has no angles and is silent; each track of kind Audio, clip, gap or stack in it is "
			"one",
			[&] { return inRead.mPlace + "/metadata/sonaro/multicam"; });
		return;
	}
	CheckAngle(inStack, inRead, multicam->mFirst, "angle");
	for (AngleCut const& cut : multicam->mCuts)
	{
		CheckAngle(inStack, inRead, cut.mAngle, "cuts/" + std::to_string(cut.mIndex) + "/angle");
	}
}

} // namespace SonaroHost::Otio
