#include "AngleRows.h"

#include <algorithm>
#include <cstdint>

namespace SonaroHost::Otio
{

namespace
{

// Whole frames of the angles' grid at which angles begin.
class CutTable
{
public:
	CutTable(Stack const& inStack, Ratio const& inStart, Grid const& inGrid)
		: mAngles{FindAngle(inStack, inStack.GetSettings().mMulticam->mFirst).value_or(0)}
	{
		for (AngleCut const& cut : inStack.GetSettings().mMulticam->mCuts)
		{
			mTimes.push_back(inGrid.ToTime(inGrid.ToFrame(inStart + ToSeconds(cut.mTime))));
			mAngles.push_back(FindAngle(inStack, cut.mAngle).value_or(0));
		}
	}

	// Those that lie between two times.
	std::vector<Ratio> ListTimes(TimeSpan const& inSpan) const
	{
		return {
			std::ranges::lower_bound(mTimes, inSpan.mStart), std::ranges::upper_bound(mTimes, inSpan.mEnd)};
	}

	// inIsFalling: before a cut in the order of the programme is after it in that of the content.
	std::size_t FindAngleAt(Ratio const& inTime, bool inIsFalling) const
	{
		auto const cut =
			inIsFalling ? std::ranges::upper_bound(mTimes, inTime) : std::ranges::lower_bound(mTimes, inTime);
		return mAngles[static_cast<std::size_t>(cut - mTimes.begin())];
	}

private:
	std::vector<Ratio> mTimes;
	// Before the first cut and after each.
	std::vector<std::size_t> mAngles;
};

} // namespace

std::shared_ptr<std::vector<AngleStretch> const> FindAngles(
	Stack const& inStack, Ratio const& inStart, Scope const& inScope)
{
	CutTable const cuts(inStack, inStart, inScope.mGrid);
	FrameTimes const times(inScope.mToProgramme.Invert(), inScope.mGrid.GetSampleRate());
	auto stretches = std::make_shared<std::vector<AngleStretch>>();
	for (Passage const& passage : inScope.mHearing->ListPassages())
	{
		bool const isFalling = times.IsFalling(passage);
		Ratio const first = times.GetTime(passage.mFirst);
		Ratio const last = times.GetTime(passage.mEnd - 1);
		for (Passage const& part :
			times.Split(passage, cuts.ListTimes({std::min(first, last), std::max(first, last)})))
		{
			stretches->push_back({part, cuts.FindAngleAt(times.GetTime(part.mFirst), isFalling)});
		}
	}
	return stretches;
}

std::vector<Passage> ListPassages(std::vector<AngleStretch> const& inStretches, std::size_t inAngle)
{
	std::vector<Passage> passages;
	for (AngleStretch const& stretch : inStretches)
	{
		if (stretch.mAngle == inAngle)
		{
			passages.push_back(stretch.mPassage);
		}
	}
	return passages;
}

void AddAngleRows(MakerContext& ioContext, Stack const& inStack, Scope const& inScope, std::size_t inIndex)
{
	auto const angles = ListAngles(inStack);
	std::vector<AngleRow> rows;
	for (auto const& [passage, angle] : *inScope.mAngles)
	{
		bool const goesOn =
			!rows.empty() && rows.back().mEndFrame == passage.mFirst && rows.back().mAngle == angle + 1;
		if (goesOn)
		{
			rows.back().mEndFrame = passage.mEnd;
			continue;
		}
		Composable const& child = *angles[angle];
		rows.push_back({angle + 1, GetLabel(ItemView(child)), inScope.mTrack, child.AsItem()->mPlace,
			passage.mFirst, passage.mEnd});
	}
	auto& all = ioContext.mResult.mAngles;
	all.insert(all.begin() + static_cast<std::ptrdiff_t>(inIndex), rows.begin(), rows.end());
}

} // namespace SonaroHost::Otio
