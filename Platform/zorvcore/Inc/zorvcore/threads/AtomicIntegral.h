#pragma once

#include <atomic>
#include <concepts>

namespace zorvcore::threads
{

// An atomic integer that starts at Default; held through a shared_ptr by those who share it. Reads
// acquire, writes release, and what changes the value in place does both.
template <std::integral T, T Default = T(0)>
class AtomicIntegral
{
public:
	AtomicIntegral() = default;
	explicit AtomicIntegral(T inValue)
		: mValue(inValue)
	{
	}
	AtomicIntegral(AtomicIntegral const&) = delete;
	AtomicIntegral& operator=(AtomicIntegral const&) = delete;

	T Get() const noexcept { return mValue.load(std::memory_order_acquire); }
	void Set(T inValue) noexcept { mValue.store(inValue, std::memory_order_release); }

	// The value before.
	T Exchange(T inValue) noexcept { return mValue.exchange(inValue, std::memory_order_acq_rel); }

	// The value after.
	T Add(T inDifference) noexcept
	{
		return static_cast<T>(mValue.fetch_add(inDifference, std::memory_order_acq_rel) + inDifference);
	}

private:
	static_assert(std::atomic<T>::is_always_lock_free);

	std::atomic<T> mValue{Default};
};

} // namespace zorvcore::threads
