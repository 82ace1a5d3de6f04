#include "SonaroHost/Sequence/SequenceGraph.h"

#include "NestBuilder.h"
#include "Sequence/Node/GraphTools.h"
#include "zorvmediatypes/AudioChannelLayout.h"

#include <algorithm>
#include <map>

namespace SonaroHost::Sequence
{

namespace
{

// Sequences that stand in many places are counted in once.
class ChannelCount
{
public:
	std::uint64_t Get(Description const& inDescription)
	{
		auto const known = mCounts.find(&inDescription);
		if (known != mCounts.end())
		{
			return known->second;
		}
		// The 0 serves a sequence that is nested in itself, which is refused later.
		mCounts[&inDescription] = 0;
		std::uint64_t count = inDescription.mLayout.size();
		for (Submix const& submix : inDescription.mSubmixes)
		{
			count += submix.mLayout.size();
		}
		for (Track const& track : inDescription.mTracks)
		{
			count += track.mLayout.size();
			for (Item const& item : track.mItems)
			{
				for (Description const* const sequence : ListSequences(item))
				{
					// Doubling with each level, it may be more than there are numbers for.
					count = std::min(count + Get(*sequence), kMost);
				}
			}
		}
		return mCounts[&inDescription] = count;
	}

private:
	static constexpr std::uint64_t kMost = std::uint64_t{1} << 62;

	std::map<Description const*, std::uint64_t> mCounts;
};

} // namespace

SequenceGraph::SequenceGraph(Description const& inDescription,
	SN::InterfaceRef<SN::IAudioRenderContext> const& inContext, SN::FrameRate const& inFrameRate,
	SN::Prefetcher const* inPrefetcher, GraphView const& inView)
	: mLayout(inDescription.mLayout)
{
	GraphTools tools(inContext, inFrameRate, inView.mLabels);
	mGenerator = NestBuilder(tools, mReport, inView).BuildOutermost(inDescription, inPrefetcher);
	mReport.mWhyInOneRun = tools.GetWhyInOneRun();
	mReport.mEffects = tools.GetEffects();
}

std::uint64_t CountChannels(Description const& inDescription)
{
	return ChannelCount().Get(inDescription);
}

SN::TickTime GetLength(Description const& inDescription)
{
	SN::TickTime length;
	for (Track const& track : inDescription.mTracks)
	{
		for (Item const& item : track.mItems)
		{
			length = std::max(length, item.mEnd);
		}
	}
	return length;
}

void HearWithTwoEars(Listener const& inListener, Description& ioDescription)
{
	ioDescription.mBinaural = BinauralOutput{
		inListener, std::exchange(ioDescription.mLayout, zorvmediatypes::CreateStereoChannelLayout())};
}

} // namespace SonaroHost::Sequence
