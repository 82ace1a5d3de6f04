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
