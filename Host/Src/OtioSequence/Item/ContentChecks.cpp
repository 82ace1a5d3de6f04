#include "ContentChecks.h"

#include "SonaroHost/Base/NumberText.h"
#include "SonaroHost/Media/RateConverter.h"

#include <algorithm>
#include <cstdint>

namespace SonaroHost::Otio
{

namespace
{

// Media that ends within a picture of its clip is usual.
constexpr std::int64_t kUsualGapsPerSecond = 20;

// Without its sign.
Ratio FindLargestSpeed(ItemTiming const& inTiming)
{
	Ratio largest = std::max(inTiming.mSpeed, -inTiming.mSpeed);
	for (std::size_t i = 0; inTiming.mCurve && i < inTiming.mCurve->GetKeys().size(); ++i)
	{
		Ratio const& speed = inTiming.mCurve->GetKeys()[i].mSpeed;
		largest = std::max({largest, speed, -speed});
	}
	return largest;
}

} // namespace

bool ContentChecks::IsOutside(ItemTiming const& inTiming, TimeSpan const& inContent)
{
	return inTiming.mReachInContent.Intersect(inContent).IsEmpty();
}

void ContentChecks::CheckReach(
	Item const& inItem, Placement const& inPlacement, ItemTiming const& inTiming, Content const& inContent)
{
	auto const findShortage = [&](TimeSpan const& inUsed)
	{
		Ratio const before = inContent.mSpan.mStart - inUsed.mStart;
		Ratio const behind = inUsed.mEnd - inContent.mSpan.mEnd;
		return (std::max(before, behind) * inContent.mRate).Round();
	};
	std::int64_t const lacking =
		findShortage(inTiming.mToContent.Map(TimeSpan{inPlacement.mStart, inPlacement.mEnd}));
	std::int64_t const lackingHandle = findShortage(inTiming.mReachInContent);
	if (lacking > 0)
	{
		bool const isUsual =
			!inContent.mIsMedia || Ratio(lacking) * Ratio(kUsualGapsPerSecond) <= inContent.mRate;
		mContext.Tell(isUsual ? Note::Kind::kRemark : Note::Kind::kIgnored, inItem.mPlace,
			std::string(inContent.mIsMedia ? "the clip" : "the range") + " extends " +
				FormatCount(lacking, "sample") + " beyond its " + inContent.mName + " and is silent there");
	}
	// More than the rounding of an end.
	if (lackingHandle > std::max<std::int64_t>(lacking, 0) + 1)
	{
		mContext.Tell(Note::Kind::kIgnored, inItem.mPlace,
			"a transition needs " + FormatCount(lackingHandle, "sample") + " of handle more than the " +
				inContent.mName + " has; the missing part is silent");
	}
}

std::string ContentChecks::CheckSpeed(Item const& inItem, ItemTiming const& inTiming, Ratio const& inRates)
{
	// What the engine's resampler has room for in the largest blocks of a render.
	constexpr std::int64_t kLargestOfEngine = 60;
	bool const isByEngine =
		mContext.mOptions.mResampling == Sequence::Resampling::kEngine && !inTiming.mCurve;
	std::int64_t const limit = isByEngine ? kLargestOfEngine : RateConverter::kLargestStep;
	Ratio const largest(limit);
	if (FindLargestSpeed(inTiming) * inRates <= largest)
	{
		return {};
	}
	mContext.Tell(Note::Kind::kIgnored, inItem.mPlace,
		"the speed takes more than " + std::to_string(limit) +
			" samples for each output sample; the item is silent; reduce the speed");
	return "its speed is too high";
}

} // namespace SonaroHost::Otio
