#include "Scope.h"

#include "SonaroHost/Otio/Labels.h"

#include "SonaroHost/Base/TimePosition.h"

#include <algorithm>
#include <cstdlib>

namespace SonaroHost::Otio
{

Grid Grid::MakeThrough(Ratio const& inTime, int inSampleRate, std::int64_t& outFrame)
{
	outFrame = std::max<std::int64_t>(-(-(inTime * Ratio(inSampleRate))).Floor(), 0);
	return {inSampleRate, inTime - Ratio(outFrame, inSampleRate)};
}

SN::TickTime Grid::ToTicks(std::int64_t inFrame) const
{
	return {inFrame, SN::FrameRate::FromSamplesPerSecond(mSampleRate)};
}

TimeSpan TimeSpan::Intersect(TimeSpan const& inOther) const
{
	return {std::clamp(mStart, inOther.mStart, inOther.mEnd), std::clamp(mEnd, inOther.mStart, inOther.mEnd)};
}

TimeMap TimeMap::After(TimeMap const& inFirst) const
{
	return {Ratio(), Map(inFirst.mOffset), mFactor * inFirst.mFactor};
}

TimeSpan TimeMap::Map(TimeSpan const& inSpan) const
{
	Ratio const start = Map(inSpan.mStart);
	Ratio const end = Map(inSpan.mEnd);
	return inSpan.IsEmpty() ? TimeSpan{start, start} : TimeSpan{std::min(start, end), std::max(start, end)};
}

std::string DescribeTime(Ratio const& inSeconds)
{
	constexpr int kMilliseconds = 1000;
	std::int64_t const rounded = ToSamples(inSeconds, kMilliseconds);
	std::string text = FormatTime(std::abs(rounded), kMilliseconds);
	text.insert(0, rounded < 0 ? 1 : 0, '-');
	return text;
}

std::string DescribeSpan(TimeSpan const& inSpan)
{
	return DescribeTime(inSpan.mStart) + " to " + DescribeTime(inSpan.mEnd);
}

std::string GetLabel(ItemView const& inItem)
{
	return inItem.mTrack   ? GetLabel(*inItem.mTrack)
		   : inItem.mStack ? GetLabel(*inItem.mStack)
		   : inItem.mClip  ? GetLabel(*inItem.mClip)
						   : MakeLabel(inItem.mItem->mName, "gap", inItem.mItem->mPlace);
}

} // namespace SonaroHost::Otio
