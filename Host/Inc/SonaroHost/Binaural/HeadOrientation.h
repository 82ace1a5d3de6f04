#pragma once

#include <atomic>

namespace SonaroHost
{

// Where a listener's head is turned, in degrees: by yaw to the left, then by pitch upwards, then by roll to the right
// ear. Any angle is valid.
struct HeadAngles
{
	bool operator==(HeadAngles const&) const = default;

	// Degrees to the left, about the vertical axis.
	float mYaw = 0.0f;
	// Degrees upwards.
	float mPitch = 0.0f;
	// Degrees to the right shoulder.
	float mRoll = 0.0f;
};

// The same, live: a head tracker or a dial sets it while a playback runs, and the next block is turned there without a
// click.
//
// Threads  Any at any time. Each angle is taken over by itself, so that one block may have a part of a new orientation.
class HeadOrientation
{
public:
	HeadOrientation() = default;
	explicit HeadOrientation(HeadAngles const& inAngles) { Set(inAngles); }

	void Set(HeadAngles const& inAngles) noexcept
	{
		mYaw.store(inAngles.mYaw, std::memory_order_relaxed);
		mPitch.store(inAngles.mPitch, std::memory_order_relaxed);
		mRoll.store(inAngles.mRoll, std::memory_order_relaxed);
	}
	HeadAngles Get() const noexcept
	{
		return {mYaw.load(std::memory_order_relaxed), mPitch.load(std::memory_order_relaxed),
			mRoll.load(std::memory_order_relaxed)};
	}

private:
	std::atomic<float> mYaw{0.0f};
	std::atomic<float> mPitch{0.0f};
	std::atomic<float> mRoll{0.0f};
};

} // namespace SonaroHost
