#pragma once

#include "Vexilon/ParamValue.h"
#include "zorvcore/Export.h"
#include "zorvcore/utility/Guid.h"
#include "zorvmediatypes/TickTime.h"

#include <boost/shared_ptr.hpp>

#include <array>
#include <cstddef>
#include <cstdint>

namespace VX
{

// What one end of a curve's segment looks like. The meaning of the bytes is the parameter's own; they are
// kept, compared and hashed.
using KeyframeTangent = std::array<std::byte, 16>;

// A point of a parameter's curve, without the value: plain data that is copied freely and never
// allocates, except in Clone.
class ZORV_API KeyframeBase
{
public:
	virtual ~KeyframeBase();
	virtual boost::shared_ptr<KeyframeBase> Clone() const = 0;
	// Whether both are of one type and all fields are equal.
	virtual bool Equals(KeyframeBase const& inOther) const = 0;
	// A digest of the type code and all fields.
	virtual zorvcore::utility::Guid GetHash() const = 0;
	virtual unsigned GetTypeCode() const = 0;

	friend bool operator==(KeyframeBase const& inA, KeyframeBase const& inB) { return inA.Equals(inB); }

	zorvmediatypes::TickTime mTime;
	// The parameter's own, like the tangents: by custom the kind of the segment before and of the one after.
	std::uint32_t mIncomingKind = 0;
	std::uint32_t mOutgoingKind = 0;
	KeyframeTangent mIncomingTangent{};
	KeyframeTangent mOutgoingTangent{};

protected:
	KeyframeBase() = default;
	KeyframeBase(KeyframeBase const&) = default;
	KeyframeBase& operator=(KeyframeBase const&) = default;

	bool HasFieldsOf(KeyframeBase const& inOther) const;
	zorvcore::utility::Guid Hash(void const* inValue, std::size_t inSize) const;
};

template <class T>
class ZORV_API Keyframe final : public KeyframeBase
{
public:
	Keyframe() = default;
	Keyframe(zorvmediatypes::TickTime const& inTime, T inValue)
		: mValue(inValue)
	{
		mTime = inTime;
	}

	boost::shared_ptr<KeyframeBase> Clone() const override;
	bool Equals(KeyframeBase const& inOther) const override;
	zorvcore::utility::Guid GetHash() const override;
	unsigned GetTypeCode() const override { return kParamTypeCode<T>; }

	T mValue{};
};

extern template class Keyframe<float>;
extern template class Keyframe<bool>;

// What a parameter remembers between two questions of one reader, so that the second need not search its
// curve again. It belongs to the reader, and only the parameter looks inside.
class ZORV_API KeyframeCacheBase
{
public:
	KeyframeCacheBase() = default;
	KeyframeCacheBase(KeyframeCacheBase const&) = default;
	KeyframeCacheBase& operator=(KeyframeCacheBase const&) = default;
	virtual ~KeyframeCacheBase();

	// Whether inTime lies between the first keyframe's time and that of the last one in use, both included.
	virtual bool Contains(zorvmediatypes::TickTime const& inTime) const = 0;

	// Puts so many keyframes in use, at most the room, and lets the cache cover no time (with a count of
	// 1, time 0 alone).
	virtual void Init(unsigned inCount) = 0;
};

// Keyframes around a time, the middle one at or before it by custom.
template <class K>
class ZORV_API KeyframeCache final : public KeyframeCacheBase
{
public:
	static constexpr unsigned kRoom = 5;

	// The cache is as after Init(3).
	KeyframeCache() { Init(kInitialCount); }

	bool Contains(zorvmediatypes::TickTime const& inTime) const override;
	void Init(unsigned inCount) override;

	unsigned GetCount() const { return mCount; }
	// inIndex is below the count.
	K& operator[](unsigned inIndex) { return mKeyframes[inIndex]; }
	K const& operator[](unsigned inIndex) const { return mKeyframes[inIndex]; }

private:
	static constexpr unsigned kInitialCount = 3;

	std::array<K, kRoom> mKeyframes;
	unsigned mCount = 0;
};

extern template class KeyframeCache<Keyframe<float>>;
extern template class KeyframeCache<Keyframe<bool>>;

} // namespace VX
