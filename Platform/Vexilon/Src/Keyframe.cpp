#include "Vexilon/Keyframe.h"

#include "zorvcore/utility/Hash.h"

#include <boost/make_shared.hpp>

#include <algorithm>

namespace VX
{

using zorvcore::utility::Guid;
using zorvmediatypes::kTimeMax;
using zorvmediatypes::kTimeZero;
using zorvmediatypes::TickTime;

KeyframeBase::~KeyframeBase() = default;

KeyframeCacheBase::~KeyframeCacheBase() = default;

bool KeyframeBase::HasFieldsOf(KeyframeBase const& inOther) const
{
	return mTime == inOther.mTime && mIncomingKind == inOther.mIncomingKind &&
		   mOutgoingKind == inOther.mOutgoingKind && mIncomingTangent == inOther.mIncomingTangent &&
		   mOutgoingTangent == inOther.mOutgoingTangent;
}

Guid KeyframeBase::Hash(void const* inValue, std::size_t inSize) const
{
	static constexpr char kSalt[] = "Keyframe::HashKeyFrame";

	zorvcore::utility::HashValueMixerState state;
	auto const update = [&state](auto const& inField)
	{ zorvcore::utility::UpdateHashState(state, &inField, sizeof(inField)); };
	zorvcore::utility::UpdateHashState(state, kSalt, sizeof(kSalt) - 1);
	update(static_cast<std::uint32_t>(GetTypeCode()));
	zorvcore::utility::UpdateHashState(state, inValue, inSize);
	update(mTime.GetTicks());
	update(mIncomingKind);
	update(mOutgoingKind);
	update(mIncomingTangent);
	update(mOutgoingTangent);
	Guid digest;
	zorvcore::utility::GetHashResult(state, digest);
	return digest;
}

template <class T>
boost::shared_ptr<KeyframeBase> Keyframe<T>::Clone() const
{
	return boost::make_shared<Keyframe<T>>(*this);
}

template <class T>
bool Keyframe<T>::Equals(KeyframeBase const& inOther) const
{
	return GetTypeCode() == inOther.GetTypeCode() && HasFieldsOf(inOther) &&
		   mValue == static_cast<Keyframe<T> const&>(inOther).mValue;
}

template <class T>
Guid Keyframe<T>::GetHash() const
{
	return Hash(&mValue, sizeof(mValue));
}

template class Keyframe<float>;
template class Keyframe<bool>;

template <class K>
bool KeyframeCache<K>::Contains(TickTime const& inTime) const
{
	return mCount > 0 && inTime >= mKeyframes[0].mTime && inTime <= mKeyframes[mCount - 1].mTime;
}

template <class K>
void KeyframeCache<K>::Init(unsigned inCount)
{
	mCount = std::min(inCount, kRoom);
	unsigned const middle = mCount / 2;
	for (unsigned i = 0; i < kRoom; ++i)
	{
		mKeyframes[i] = K();
		mKeyframes[i].mTime = i < middle ? kTimeMax : i > middle ? -kTimeMax : kTimeZero;
	}
}

template class KeyframeCache<Keyframe<float>>;
template class KeyframeCache<Keyframe<bool>>;

} // namespace VX
