#pragma once

#include "SonaroHost/Base/FadeShape.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

namespace SonaroHost::Sequence
{

// Which angle is heard at each frame.
class AngleCuts
{
public:
	static constexpr int kNoAngle = -1;

	// From a frame on up to the next cut, after a crossfade from the angle before.
	struct Stretch
	{
		std::int64_t mFirst = 0;
		int mAngle = 0;
		std::int64_t mFadeFrames = 0;
		FadeShape mShape = FadeShape::kLinear;
	};
	// Frames that hear the same: an angle, and within a crossfade the one that goes out.
	struct Run
	{
		// Far beyond all times; differences of such frames stay numbers.
		static constexpr std::int64_t kFar = std::numeric_limits<std::int64_t>::max() / 4;

		std::int64_t mFirst = -kFar;
		std::int64_t mEnd = kFar;
		int mAngle = kNoAngle;
		int mOutgoing = kNoAngle;
		// The crossfade begins with the run.
		FadeShape mShape = FadeShape::kLinear;
	};

	// inFirstAngle: from frame 0 on. Before it there is silence.
	explicit AngleCuts(int inFirstAngle)
		: mStretches{{0, inFirstAngle, 0, FadeShape::kLinear}}
	{
	}

	// In the order of time; a cut at the frame of the one before takes its place. Cuts to what is heard already are none.
	void Add(Stretch inStretch)
	{
		if (inStretch.mFirst <= 0)
		{
			inStretch.mFirst = 0;
			inStretch.mFadeFrames = 0;
		}
		if (inStretch.mFirst == mStretches.back().mFirst)
		{
			mStretches.pop_back();
		}
		if (mStretches.empty() || mStretches.back().mAngle != inStretch.mAngle)
		{
			mStretches.push_back(inStretch);
		}
	}

	std::vector<Stretch> const& GetStretches() const { return mStretches; }

	// The run that a frame lies in.
	Run Find(std::int64_t inFrame) const
	{
		if (inFrame < 0)
		{
			return {.mEnd = 0};
		}
		auto const next = std::ranges::upper_bound(mStretches, inFrame, {}, &Stretch::mFirst);
		Stretch const& stretch = *(next - 1);
		Run run{.mFirst = stretch.mFirst, .mAngle = stretch.mAngle};
		run.mEnd = next == mStretches.end() ? run.mEnd : next->mFirst;
		std::int64_t const faded = std::min(stretch.mFirst + stretch.mFadeFrames, run.mEnd);
		if (inFrame >= faded)
		{
			run.mFirst = faded;
			return run;
		}
		run.mEnd = faded;
		run.mOutgoing = (next - 2)->mAngle;
		run.mShape = stretch.mShape;
		return run;
	}

private:
	std::vector<Stretch> mStretches;
};

} // namespace SonaroHost::Sequence
