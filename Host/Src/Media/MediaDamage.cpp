#include "SonaroHost/Media/MediaDamage.h"

#include <algorithm>
#include <utility>

namespace SonaroHost
{

void MediaDamage::Add(Stretch const& inStretch)
{
	if (inStretch.mFirst >= inStretch.mEnd)
	{
		return;
	}
	std::scoped_lock const lock(mMutex);
	Stretch whole = inStretch;
	auto const first = std::ranges::find_if(
		mStretches, [&whole](Stretch const& inOther) { return inOther.mEnd >= whole.mFirst; });
	auto last = first;
	for (; last != mStretches.end() && last->mFirst <= whole.mEnd; ++last)
	{
		whole.mFirst = std::min(whole.mFirst, last->mFirst);
		whole.mEnd = std::max(whole.mEnd, last->mEnd);
	}
	mStretches.insert(mStretches.erase(first, last), whole);
}

std::vector<MediaDamage::Stretch> MediaDamage::Get() const
{
	std::scoped_lock const lock(mMutex);
	return mStretches;
}

std::vector<MediaDamage::Stretch> MediaDamage::Take()
{
	std::scoped_lock const lock(mMutex);
	return std::exchange(mStretches, {});
}

} // namespace SonaroHost
