#pragma once

#include "SonaroHost/Automation/AutomationParameter.h"
#include "SonaroHost/Sequence/Description.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <vector>

namespace SonaroHost::Sequence::Testing
{

// What is edited while a playback runs, at which frames of its playhead.
struct LiveEdits
{
	template <class T>
	struct Edit
	{
		std::int64_t mFrame = 0;
		T mValue = {};
	};

	// Of parameters without curves; the first one stands for what is there before. In the order of time.
	std::map<AutomationParameter<float>*, std::vector<Edit<float>>> mNumbers;
	std::map<AutomationParameter<bool>*, std::vector<Edit<bool>>> mSwitches;
	std::map<zorvcore::threads::AtomicIntegral<int>*, std::vector<Edit<int>>> mMutes;
};

struct NaivePlace
{
	// How many frames the sound is ahead of the playhead where it meets the parameter.
	std::int64_t mAhead = 0;
	// The playhead when it begins: what was edited before counts at once.
	std::int64_t mBegin = 0;
};

// A parameter as somebody hears it who does not know of blocks.
template <class T>
class NaiveParameter
{
public:
	// inEdits outlives this object.
	NaiveParameter(SN::InterfaceRef<AutomationParameter<T>> const& inParameter,
		SN::FrameRate const& inFrameRate, std::vector<LiveEdits::Edit<T>> const* inEdits,
		NaivePlace const& inPlace);

	// At a frame of the sound, which is inShift frames more than the time of the curve.
	double GetValue(std::int64_t inFrame, std::int64_t inShift = 0) const;

private:
	double GetCurveValue(SN::TickTime const& inTime) const;
	// With ramps behind jumps. inJumps: of mJumps, so many lie at or before the time.
	double GetRamped(SN::TickTime const& inTime, std::size_t inJumps) const;

	SN::InterfaceRef<AutomationParameter<T>> mParameter;
	SN::FrameRate mFrameRate;
	std::vector<LiveEdits::Edit<T>> const* mEdits;
	NaivePlace mPlace;
	bool mHasCurve = false;
	std::vector<SN::TickTime> mJumps;
};

// A value that goes from one edit to the next in a straight line of so many frames.
template <class T>
double FollowEdits(std::vector<LiveEdits::Edit<T>> const& inEdits, std::int64_t inPlayhead,
	std::int64_t inRampFrames, std::int64_t inBegin = 0)
{
	auto value = static_cast<double>(inEdits.front().mValue);
	for (std::size_t index = 1;
		 index < inEdits.size() && inEdits[index].mFrame <= std::max(inPlayhead, inBegin); ++index)
	{
		auto const done = static_cast<double>(inPlayhead - inEdits[index].mFrame);
		auto const next = static_cast<double>(inEdits[index].mValue);
		bool const isThere = inEdits[index].mFrame <= inBegin;
		value += (next - value) * (isThere ? 1.0 : std::min(1.0, done / static_cast<double>(inRampFrames)));
	}
	return value;
}

} // namespace SonaroHost::Sequence::Testing
