#include "SonaroHost/Media/MediaDamage.h"

#include "SonaroHost/Base/TimePosition.h"

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

std::string DescribeDamage(DamagedMedia const& inMedia)
{
	constexpr std::size_t kMostStretches = 5;
	std::string text = "is damaged: silence";
	std::size_t const shown = std::min(inMedia.mStretches.size(), kMostStretches);
	for (std::size_t i = 0; i < shown; ++i)
	{
		MediaDamage::Stretch const& stretch = inMedia.mStretches[i];
		text += (i == 0 ? " from " : ", from ") + FormatTime(stretch.mFirst, inMedia.mSampleRate) + " to " +
				FormatTime(stretch.mEnd, inMedia.mSampleRate);
	}
	std::size_t const more = inMedia.mStretches.size() - shown;
	return text + (more > 0 ? " and in " + std::to_string(more) + " more places" : "");
}

} // namespace SonaroHost
