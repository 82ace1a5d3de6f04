#pragma once

#include <atomic>
#include <limits>
#include <optional>
#include <string>
#include <utility>

namespace SonaroHost
{

// A control of an effect that a listener may move while a playback runs. As long as it is held, its value goes before
// the one that the effect was set up with, curves included.
//
// Heard    From the next block on, in a straight line over 5 ms, in the logarithm for logarithmic controls; those that can
//          only jump do so. An export keeps to what was held when its graph was made.
// Threads  Any; nothing waits, locks or allocates but the constructors.
class LiveControl
{
public:
	// The symbol of the host's own bypass of an effect, which no effect has: 1 while it is bypassed.
	static constexpr char const* kBypassSymbol = "sonaro:bypass";

	// What it controls, and in which range.
	struct Facts
	{
		// By which LiveEffects finds it in its effect.
		std::string mSymbol;
		// For people.
		std::string mName;
		// The symbol of the unit, as "dB"; empty for none.
		std::string mUnit;
		// Infinite where the effect states none.
		float mMinimum = 0.0f;
		float mMaximum = 1.0f;
		// What it was set up with; the first value of a curve.
		float mValue = 0.0f;
		// Only whole numbers, as switches have.
		bool mIsWhole = false;
		// Whether it jumps from value to value: those of whole numbers, and choices.
		bool mJumps = false;
		// Whether equal steps of it are equal ratios, as with frequencies.
		bool mIsLogarithmic = false;
		// Whether it moves by a curve while nobody holds it.
		bool mHasCurve = false;
		// Whether it is the effect's own way of being bypassed: 0 while it is.
		bool mEnables = false;
	};

	explicit LiveControl(Facts inFacts)
		: mFacts(std::move(inFacts))
	{
	}
	// One that is held at the same value, and then goes its own way.
	LiveControl(LiveControl const& inOther)
		: mFacts(inOther.mFacts),
		  mHeld(inOther.mHeld.load(std::memory_order_relaxed))
	{
	}
	LiveControl& operator=(LiveControl const&) = delete;

	Facts const& GetFacts() const { return mFacts; }

	// Brought into the range and, where only whole numbers are allowed, to the nearest one. What is not a number releases
	// it.
	void Hold(float inValue);
	// The effect goes back to what it was set up with.
	void Release() { mHeld.store(kFree, std::memory_order_relaxed); }
	// Nothing while it is not held.
	std::optional<float> GetHeld() const;

private:
	static constexpr float kFree = std::numeric_limits<float>::quiet_NaN();

	Facts mFacts;
	std::atomic<float> mHeld{kFree};
};

} // namespace SonaroHost
