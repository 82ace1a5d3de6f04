#include "Passages.h"

#include "SonaroHost/Otio/RationalTime.h"

#include <algorithm>
#include <utility>

namespace SonaroHost::Otio
{

Ratio FrameTimes::GetTime(std::int64_t inFrame) const
{
	return mFromProgramme.Map(Ratio(2 * inFrame + 1, std::int64_t{2} * mSampleRate));
}

bool FrameTimes::IsFalling(Passage const& inPassage) const
{
	return mFromProgramme.Map(Ratio(inPassage.mEnd, mSampleRate)) <
		   mFromProgramme.Map(Ratio(inPassage.mFirst, mSampleRate));
}

std::int64_t FrameTimes::FindFrame(Passage const& inPassage, Ratio const& inTime) const
{
	if (mFromProgramme.IsLinear())
	{
		std::int64_t const frame = ToSamples(mFromProgramme.Invert().Map(inTime), mSampleRate);
		return std::clamp(frame, inPassage.mFirst, inPassage.mEnd);
	}
	bool const isFalling = IsFalling(inPassage);
	auto [low, high] = inPassage;
	while (low < high)
	{
		std::int64_t const middle = low + (high - low) / 2;
		Ratio const time = GetTime(middle);
		(isFalling ? time < inTime : time > inTime) ? high = middle : low = middle + 1;
	}
	return low;
}

std::vector<Passage> FrameTimes::Split(Passage const& inPassage, std::vector<Ratio> const& inTimes) const
{
	std::vector<std::int64_t> borders{inPassage.mFirst, inPassage.mEnd};
	for (Ratio const& time : inTimes)
	{
		borders.push_back(FindFrame(inPassage, time));
	}
	std::ranges::sort(borders);
	borders.erase(std::unique(borders.begin(), borders.end()), borders.end());
	std::vector<Passage> parts;
	for (std::size_t i = 1; i < borders.size(); ++i)
	{
		parts.push_back({borders[i - 1], borders[i]});
	}
	return parts;
}

Hearing::Hearing(std::shared_ptr<Hearing const> inOuter, FrameTimes inOuterTimes, TimeSpan const& inReach,
	std::vector<Ratio> inTurns)
	: mOuter(std::move(inOuter)),
	  mOuterTimes(std::move(inOuterTimes)),
	  mReach(inReach),
	  mBorders(std::move(inTurns))
{
	mBorders.insert(mBorders.end(), {inReach.mStart, inReach.mEnd});
}

std::vector<Passage> Hearing::ListPassages() const
{
	if (!mOuter)
	{
		return mPassages;
	}
	std::vector<Passage> heard;
	for (Passage const& outer : mOuter->ListPassages())
	{
		bool const isFalling = mOuterTimes.IsFalling(outer);
		for (Passage const& part : mOuterTimes.Split(outer, mBorders))
		{
			// What is before a border as frames go has it at its end.
			Ratio const time = mOuterTimes.GetTime(part.mFirst);
			bool const isInside = isFalling ? time >= mReach.mStart && time < mReach.mEnd
											: time > mReach.mStart && time <= mReach.mEnd;
			if (isInside)
			{
				heard.push_back(part);
			}
		}
	}
	return heard;
}

} // namespace SonaroHost::Otio
