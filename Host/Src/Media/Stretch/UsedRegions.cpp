#include "SonaroHost/Media/UsedRegions.h"

#include <algorithm>
#include <iterator>

namespace SonaroHost
{

void UsedRegions::Add(Span const& inUsed)
{
	Span whole = inUsed;
	auto const first = std::ranges::find_if(
		mRegions, [&](Span const& inRegion) { return inRegion.mEnd + mDistance >= whole.mFirst; });
	auto last = first;
	for (; last != mRegions.end() && last->mFirst - mDistance <= whole.mEnd; ++last)
	{
		whole.mFirst = std::min(whole.mFirst, last->mFirst);
		whole.mEnd = std::max(whole.mEnd, last->mEnd);
	}
	mRegions.insert(mRegions.erase(first, last), whole);
}

UsedRegions::Span const& UsedRegions::Find(std::int64_t inFrame) const
{
	return *std::prev(std::ranges::upper_bound(mRegions, inFrame, {}, &Span::mFirst));
}

} // namespace SonaroHost
